#include "tabbar/PSMBigSurStyle.h"

#include "tabbar/PSMTabBarCell.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

QRectF plateOf(const QRectF &frame)
{
    return frame.adjusted(2, 4, -2, -5);
}

} // namespace

QString PSMBigSurStyle::name() const
{
    return u"BigSur"_s;
}

PSMTabStyle::Colors PSMBigSurStyle::colors(const QPalette &palette, bool isActive) const
{
    const QColor window = palette.color(QPalette::Window);
    const QColor text = palette.color(QPalette::WindowText);
    const bool dark = isDark(palette);
    Colors colors;
    colors.bar = window;
    colors.selectedTab = dark ? mixed(window, text, 0.15) : mixed(window, Qt::white, 0.85);
    colors.hoveredTab = mixed(window, text, 0.06);
    colors.line = mixed(window, dark ? QColor(Qt::black) : text, dark ? 0.45 : 0.16);
    colors.title = mixed(window, text, isActive ? 0.76 : 0.7);
    colors.selectedTitle = mixed(colors.selectedTab, text, isActive ? 1.0 : 0.8);
    colors.closeHover = text;
    colors.closeHover.setAlphaF(0.13F);
    colors.focus = palette.color(QPalette::Highlight);
    return colors;
}

void PSMBigSurStyle::drawBar(QPainter &painter, const QRectF &rect, const PSMTabBarState &bar) const
{
    const Colors colors = this->colors(bar.palette, bar.isActive);
    painter.fillRect(rect, colors.bar);
    const bool horizontal = bar.orientation == Qt::Horizontal;
    painter.fillRect(horizontal ? QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1)
                                : QRectF(rect.right() - 1, rect.top(), 1, rect.height()),
                     colors.line);
}

void PSMBigSurStyle::drawTab(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const
{
    const Colors colors = this->colors(bar.palette, bar.isActive);
    const QRectF frame = onPixels(cell.frame(), bar.devicePixelRatio);
    const bool raised = cell.is(PSMTabBarCell::Selected) || cell.is(PSMTabBarCell::Held);
    if (raised) {
        painter.setPen(QPen(colors.line, 1));
        painter.setBrush(colors.selectedTab);
        painter.drawRoundedRect(plateOf(frame).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    } else if (cell.is(PSMTabBarCell::Hovered)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.hoveredTab);
        painter.drawRoundedRect(plateOf(frame), 6, 6);
    }
}

QRectF PSMBigSurStyle::focusRect(const QRectF &frame) const
{
    return plateOf(frame);
}
