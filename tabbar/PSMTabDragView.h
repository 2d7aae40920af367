#pragma once

#include <QPixmap>
#include <QWidget>

/// The picture of a tab that was dragged off its bar, with a small picture of its view below if there is one.
class PSMTabDragView : public QWidget
{
    Q_OBJECT
public:
    /// \a tab and \a miniature carry their own device pixel ratios; the latter may be null.
    PSMTabDragView(const QPixmap &tab, const QPixmap &miniature, QWidget *parent);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPixmap m_tab;
    QPixmap m_miniature;
};
