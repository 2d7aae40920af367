#include "tabbar/PSMTabStyle.h"

#include "tabbar/PSMTabBarCell.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <cmath>

namespace {

constexpr qreal kTitlePadding = 12;
constexpr qreal kIconSize = 16;
constexpr qreal kIconGap = 6;
constexpr qreal kCloseSize = 18;
constexpr qreal kCloseInset = 5;
constexpr qreal kCloseGap = 4;
constexpr qreal kCrossSize = 7;
constexpr qreal kSmallestTitle = 12;

qreal iconWidth(const PSMTabBarCell &cell)
{
    return cell.icon().isNull() ? 0 : kIconSize + kIconGap;
}

/// A tab tells how to close it while the pointer or the selection is there; the others stay calm.
bool showsCloseButton(const PSMTabBarCell &cell)
{
    return !cell.isCloseButtonSuppressed()
        && (cell.is(PSMTabBarCell::Selected) || cell.is(PSMTabBarCell::Hovered));
}

QRectF mirrored(const QRectF &rect, const QRectF &within, Qt::LayoutDirection direction)
{
    if (direction == Qt::LeftToRight)
        return rect;
    return QRectF(within.left() + within.right() - rect.right(), rect.y(), rect.width(), rect.height());
}

} // namespace

qreal PSMTabStyle::rightMargin(bool addTabButton, bool overflowButton) const
{
    return leftMargin() + (addTabButton ? kButtonExtent : 0) + (overflowButton ? kButtonExtent : 0);
}

qreal PSMTabStyle::tabCellHeight(const QFont &font) const
{
    return std::ceil(std::max(kCloseSize, QFontMetricsF(font).height())) + extraCellHeight();
}

qreal PSMTabStyle::desiredWidthOfTabCell(const PSMTabBarCell &cell, const QFont &font, qreal minimum) const
{
    const qreal content =
        kTitlePadding + iconWidth(cell) + cell.titleWidth(font) + kCloseGap + kCloseSize + kCloseInset;
    return std::max(minimum, std::ceil(content));
}

QRectF PSMTabStyle::closeButtonRect(const QRectF &frame, Qt::LayoutDirection direction) const
{
    const qreal top = topMargin();
    const QRectF rect(frame.right() - kCloseInset - kCloseSize,
                      std::round(frame.top() + top + (frame.height() - top - kCloseSize) / 2), kCloseSize,
                      kCloseSize);
    return mirrored(rect, frame, direction);
}

void PSMTabStyle::drawCell(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar) const
{
    const Colors colors = this->colors(bar.palette, bar.isActive);
    const bool selected = cell.is(PSMTabBarCell::Selected);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    drawTab(painter, cell, bar);
    drawTitle(painter, cell, bar, selected ? colors.selectedTitle : colors.title);
    if (showsCloseButton(cell))
        drawCloseButton(painter, cell, bar, colors);
    if (selected && bar.hasFocus) {
        painter.setPen(QPen(colors.focus, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(focusRect(cell.frame()).adjusted(1, 1, -1, -1), 5, 5);
    }
    painter.restore();
}

void PSMTabStyle::drawTitle(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar,
                            const QColor &color) const
{
    const QRectF frame = cell.frame().adjusted(0, topMargin(), 0, 0);
    // The close button's room stays free when it is not shown: titles must not jump under the pointer.
    const qreal closeRoom =
        cell.isCloseButtonSuppressed() ? kTitlePadding : kCloseInset + kCloseSize + kCloseGap;
    const qreal space = frame.width() - kTitlePadding - closeRoom;
    const qreal width = iconWidth(cell) + cell.titleWidth(bar.font);
    const qreal centred = (frame.width() - width) / 2;
    const qreal left = std::max(kTitlePadding, std::min(centred, kTitlePadding + space - width));
    QRectF rect(std::round(frame.left() + left), frame.top(), std::min(width, space) + 1, frame.height());
    if (!cell.icon().isNull() && rect.width() >= kIconSize) {
        const QRectF iconRect(rect.left(), std::round(rect.center().y() - kIconSize / 2), kIconSize,
                              kIconSize);
        cell.icon().paint(&painter, mirrored(iconRect, cell.frame(), bar.direction).toRect());
        rect.setLeft(rect.left() + kIconSize + kIconGap);
    }
    painter.setFont(bar.font);
    painter.setPen(color);
    const bool fits = cell.titleWidth(bar.font) <= rect.width();
    if (!fits && rect.width() < kSmallestTitle)
        return; // not even an ellipsis
    const QString text = fits
        ? cell.displayTitle()
        : QFontMetricsF(bar.font).elidedText(cell.displayTitle(), Qt::ElideRight, rect.width());
    painter.drawText(mirrored(rect, cell.frame(), bar.direction), Qt::AlignCenter | Qt::TextSingleLine, text);
}

void PSMTabStyle::drawCloseButton(QPainter &painter, const PSMTabBarCell &cell, const PSMTabBarState &bar,
                                  const Colors &colors) const
{
    const QRectF button = closeButtonRect(cell.frame(), bar.direction);
    const bool pressed = cell.is(PSMTabBarCell::ClosePressed);
    const bool hovered = cell.is(PSMTabBarCell::CloseHovered);
    if (hovered || pressed) {
        QColor fill = colors.closeHover;
        if (pressed && hovered)
            fill.setAlphaF(std::min(1.0F, fill.alphaF() * 1.8F));
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(button.adjusted(1, 1, -1, -1), 4, 4);
    }
    const QPointF half(kCrossSize / 2, kCrossSize / 2);
    const QRectF cross(button.center() - half, button.center() + half);
    painter.setPen(QPen(hovered ? colors.selectedTitle : colors.title, 1.3, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(cross.topLeft(), cross.bottomRight());
    painter.drawLine(cross.topRight(), cross.bottomLeft());
}

QColor PSMTabStyle::mixed(const QColor &from, const QColor &to, qreal part)
{
    const auto channel = [part](float a, float b) { return float(a + (b - a) * part); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

bool PSMTabStyle::isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF();
}

QRectF PSMTabStyle::onPixels(const QRectF &rect, qreal devicePixelRatio)
{
    const auto snapped = [devicePixelRatio](qreal value) {
        return std::round(value * devicePixelRatio) / devicePixelRatio;
    };
    return QRectF(QPointF(snapped(rect.left()), snapped(rect.top())),
                  QPointF(snapped(rect.right()), snapped(rect.bottom())));
}
