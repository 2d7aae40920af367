#include "tabbar/PSMOverflowPopUpButton.h"

#include "tabbar/TabBarButton.h"

#include <QMenu>
#include <QPainter>

PSMOverflowPopUpButton::PSMOverflowPopUpButton(QWidget *parent) : QToolButton(parent)
{
    setFocusPolicy(Qt::TabFocus);
    setPopupMode(QToolButton::InstantPopup);
    setAccessibleName(tr("More tabs"));
    setMenu(new QMenu(this));
    hide();
}

void PSMOverflowPopUpButton::setContent(qsizetype hiddenTabs, bool holdsSelection)
{
    setToolTip(tr("More tabs: %1").arg(hiddenTabs));
    m_holdsSelection = holdsSelection;
    QWidget::update();
}

void PSMOverflowPopUpButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    runebook::drawTabBarButtonPlate(painter, *this);
    // Two chevrons pointing to where the row of tabs would go on.
    const QPointF middle = QRectF(rect()).center();
    const qreal arm = layoutDirection() == Qt::RightToLeft ? -3.5 : 3.5;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(runebook::tabBarGlyphColor(*this), 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const qreal offset : {-arm, arm / 2}) {
        const QPointF tip(middle.x() + offset + arm, middle.y());
        painter.drawPolyline(QPolygonF {{tip.x() - arm, tip.y() - 4}, tip, {tip.x() - arm, tip.y() + 4}});
    }
    if (m_holdsSelection) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::Highlight));
        painter.drawEllipse(QPointF(middle.x() + 7, middle.y() - 7), 2.5, 2.5);
    }
}
