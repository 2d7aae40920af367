#include "tabbar/PSMYosemiteStyle.h"

#include "tabbar/PSMTabBarCell.h"

#include <QPainter>

using namespace Qt::StringLiterals;

QString PSMYosemiteStyle::name() const
{
    return u"Yosemite"_s;
}

PSMTabStyle::Colors PSMYosemiteStyle::colors(const QPalette &palette, bool isActive) const
{
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    const bool dark = isDark(palette);
    Colors colors;
    colors.bar = dark ? mixed(window, Qt::black, 0.32) : mixed(window, text, 0.085);
    colors.selectedTab = dark ? mixed(window, text, 0.06) : mixed(window, Qt::white, 0.55);
    colors.hoveredTab = mixed(colors.bar, text, dark ? 0.07 : 0.05);
    colors.line = dark ? mixed(window, Qt::black, 0.72) : mixed(window, text, 0.2);
    colors.title = mixed(colors.bar, text, isActive ? 0.76 : 0.7);
    colors.selectedTitle = mixed(colors.selectedTab, text, isActive ? 1.0 : 0.8);
    colors.closeHover = text;
    colors.closeHover.setAlphaF(0.14F);
    colors.focus = palette.color(QPalette::Highlight);
    return colors;
}

void PSMYosemiteStyle::drawBar(QPainter &painter, const QRectF &rect, const PSMTabBarState &bar) const
{
    const Colors colors = this->colors(bar.palette, bar.isActive);
    painter.fillRect(rect, colors.bar);
    // The divider to what stands above, and the edge the unselected tabs lie behind.
    const qreal hair = 1;
    painter.fillRect(QRectF(rect.left(), rect.top(), rect.width(), hair), colors.line);
    painter.fillRect(QRectF(rect.left(), rect.bottom() - hair, rect.width(), hair), colors.line);
}

void PSMYosemiteStyle::drawTab(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const
{
    const Colors colors = this->colors(bar.palette, bar.isActive);
    const QRectF frame = onPixels(cell.frame(), bar.devicePixelRatio);
    const bool selected = cell.is(PSMTabBarCell::Selected);
    const bool held = cell.is(PSMTabBarCell::Held);
    QRectF ground = frame.adjusted(0, 1, 0, selected ? 0 : -1);
    if (bar.orientation == Qt::Vertical)
        ground = frame.adjusted(0, 0, 0, -1);
    if (selected)
        painter.fillRect(ground, colors.selectedTab);
    else if (cell.is(PSMTabBarCell::Hovered) || held)
        painter.fillRect(ground, colors.hoveredTab);
    if (bar.orientation == Qt::Vertical) {
        painter.fillRect(QRectF(frame.left(), frame.bottom() - 1, frame.width(), 1), colors.line);
        return;
    }
    const QRectF end(frame.right() - 1, frame.top(), 1, frame.height());
    painter.fillRect(end, colors.line);
    // The neighbour's line on the other side moves away while the tab is carried.
    if (held || bar.direction == Qt::RightToLeft)
        painter.fillRect(QRectF(frame.left() - (held ? 1 : 0), frame.top(), 1, frame.height()), colors.line);
}

QRectF PSMYosemiteStyle::focusRect(const QRectF &frame) const
{
    return frame.adjusted(1, 2, -2, -1);
}
