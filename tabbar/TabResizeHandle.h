#pragma once

#include <QWidget>

class VXTabBarControl;

namespace runebook {

/// The grip at the end of a tab bar that makes it wider or narrower.
class TabResizeHandle : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSmallestWidth = 6;
    explicit TabResizeHandle(VXTabBarControl *bar);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    VXTabBarControl *m_bar;
    int m_lastGlobalX = 0;
};

} // namespace runebook
