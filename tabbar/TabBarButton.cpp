#include "tabbar/TabBarButton.h"

#include <QPainter>

namespace runebook {

void drawTabBarButtonPlate(QPainter &painter, const QToolButton &button)
{
    const QRectF plate = QRectF(button.rect()).adjusted(3, 4, -3, -4);
    QColor fill = button.palette().color(QPalette::WindowText);
    painter.setRenderHint(QPainter::Antialiasing);
    if (button.isDown() || button.underMouse()) {
        fill.setAlphaF(button.isDown() ? 0.18F : 0.09F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(plate, 5, 5);
    }
    if (button.hasFocus()) {
        painter.setPen(QPen(button.palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(plate, 5, 5);
    }
}

QColor tabBarGlyphColor(const QToolButton &button)
{
    QColor color = button.palette().color(QPalette::WindowText);
    color.setAlphaF(button.underMouse() || button.hasFocus() ? 1.0F : 0.75F);
    return color;
}

AddTabButton::AddTabButton(QWidget *parent) : QToolButton(parent)
{
    setFocusPolicy(Qt::TabFocus);
    setToolTip(tr("New tab"));
    setAccessibleName(tr("New tab"));
}

void AddTabButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawTabBarButtonPlate(painter, *this);
    const QPointF middle = QRectF(rect()).center();
    const qreal arm = 5;
    painter.setPen(QPen(tabBarGlyphColor(*this), 1.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(middle - QPointF(arm, 0), middle + QPointF(arm, 0));
    painter.drawLine(middle - QPointF(0, arm), middle + QPointF(0, arm));
}

} // namespace runebook
