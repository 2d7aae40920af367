#include "editing/search/SearchChip.h"

#include "platform/PlainText.h"

#include <QPainter>

namespace runebook {

namespace {

constexpr int kPadding = 6;
constexpr int kCrossWidth = 12;
constexpr double kCrossSize = 3;

} // namespace

SearchChip::SearchChip(QWidget *field) : QToolButton(field)
{
    setObjectName(QStringLiteral("searchChip"));
    setCursor(Qt::ArrowCursor);
    setFocusPolicy(Qt::TabFocus);
    hide();
}

void SearchChip::setPlace(const QString &place)
{
    setText(place);
    setAccessibleName(tr("Searches in %1. Press to search everywhere.").arg(place));
    setToolTip(escapedToolTip(tr("Search everywhere again (Backspace in the empty field)")));
}

QSize SearchChip::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 2 * kPadding + kCrossWidth + 2, metrics.height() + 4};
}

void SearchChip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = palette().color(QPalette::Highlight);
    ground.setAlphaF(underMouse() || isDown() ? 0.4F : 0.22F);
    painter.setPen(hasFocus() ? QPen(palette().color(QPalette::Highlight), 1.5) : QPen(Qt::NoPen));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 4, 4);
    painter.setPen(palette().color(QPalette::Text));
    const QRect room = rect().adjusted(kPadding, 0, -kPadding - kCrossWidth, 0);
    painter.drawText(room, Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
    const QPointF middle(width() - kPadding - kCrossSize, height() / 2.0);
    painter.setPen(QPen(palette().color(QPalette::Text), 1.2));
    painter.drawLine(middle + QPointF(-kCrossSize, -kCrossSize), middle + QPointF(kCrossSize, kCrossSize));
    painter.drawLine(middle + QPointF(-kCrossSize, kCrossSize), middle + QPointF(kCrossSize, -kCrossSize));
}

} // namespace runebook
