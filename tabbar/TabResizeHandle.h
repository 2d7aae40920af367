#pragma once

#include <QWidget>

namespace runebook {

class TabStrip;

/// The grip at the end of a tab bar that makes it wider or narrower.
class TabResizeHandle : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSmallestWidth = 6;
    explicit TabResizeHandle(TabStrip &bar);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    TabStrip &m_bar;
    int m_lastGlobalX = 0;
};

} // namespace runebook
