#include "tabbar/PSMTabDragView.h"

#include <QPainter>

PSMTabDragView::PSMTabDragView(const QPixmap &tab, const QPixmap &miniature, QWidget *parent)
    : QWidget(parent), m_tab(tab), m_miniature(miniature)
{
    resize(PSMTabDragView::sizeHint());
}

QSize PSMTabDragView::sizeHint() const
{
    const QSizeF tab = m_tab.deviceIndependentSize();
    const QSizeF miniature = m_miniature.isNull() ? QSizeF(0, 0) : m_miniature.deviceIndependentSize();
    return QSizeF(std::max(tab.width(), miniature.width()), tab.height() + miniature.height()).toSize();
}

void PSMTabDragView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.drawPixmap(QPointF(0, 0), m_tab);
    if (!m_miniature.isNull())
        painter.drawPixmap(QPointF(0, m_tab.deviceIndependentSize().height()), m_miniature);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(0.3F);
    painter.setPen(edge);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}
