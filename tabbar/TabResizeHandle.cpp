#include "tabbar/TabResizeHandle.h"

#include "tabbar/TabStrip.h"

#include <QMouseEvent>
#include <QPainter>

namespace runebook {

TabResizeHandle::TabResizeHandle(TabStrip &bar) : QWidget(&bar.widget()), m_bar(bar)
{
    setCursor(Qt::SplitHCursor);
    setAccessibleName(tr("Tab bar width"));
    hide();
}

void TabResizeHandle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(0.35F);
    const QRectF area(rect());
    const qreal height = std::min(12.0, area.height() / 2);
    painter.fillRect(QRectF(area.center().x() - 0.5, area.center().y() - height / 2, 1, height), line);
}

void TabResizeHandle::mousePressEvent(QMouseEvent *event)
{
    m_lastGlobalX = event->globalPosition().toPoint().x();
}

void TabResizeHandle::mouseMoveEvent(QMouseEvent *event)
{
    // In screen coordinates: the handle moves with the edge it drags.
    const int x = event->globalPosition().toPoint().x();
    const int delta = layoutDirection() == Qt::RightToLeft ? m_lastGlobalX - x : x - m_lastGlobalX;
    m_lastGlobalX = x;
    m_bar.resizeByHandle(delta);
}

} // namespace runebook
