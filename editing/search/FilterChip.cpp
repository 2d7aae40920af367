#include "editing/search/FilterChip.h"

#include "editing/fields/GlyphColumns.h"
#include "platform/PlainText.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>

namespace runebook {

namespace {

constexpr int kPadding = 8;
constexpr int kCrossWidth = 14;
constexpr double kCrossSize = 3;
constexpr int kWidest = 320;

} // namespace

FilterChip::FilterChip(const FieldCondition &condition, int number, QWidget *bar)
    : QToolButton(bar), m_condition(condition), m_number(number)
{
    setText(cellDisplayText(condition.description()));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setAccessibleName(condition.isOff ? tr("Condition, switched off: %1").arg(text())
                                      : tr("Condition: %1").arg(text()));
    setAccessibleDescription(
        tr("Enter edits it, Delete takes it away, - turns it round, Ctrl+Space switches it off and on."));
    setToolTip(escapedToolTip(text() + u'\n' + accessibleDescription()));
    connect(this, &QToolButton::clicked, this, [this] { Q_EMIT editRequested(m_number); });
}

QSize FilterChip::sizeHint() const
{
    const QFontMetrics metrics(font());
    // Advances are fractions; without some room to spare the text would be cut.
    const int width = metrics.horizontalAdvance(text()) + 2 * kPadding + kCrossWidth + 4;
    return {qMin(width, kWidest), metrics.height() + 8};
}

QRect FilterChip::crossRect() const
{
    QRect cross(0, 0, kCrossWidth + kPadding, height());
    if (layoutDirection() == Qt::LeftToRight)
        cross.moveRight(width() - 1);
    return cross;
}

void FilterChip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor ground = palette().color(m_condition.isOff ? QPalette::Mid : QPalette::Highlight);
    ground.setAlphaF(underMouse() || isDown() ? 0.4F : 0.22F);
    painter.setPen(hasFocus() ? QPen(palette().color(QPalette::Highlight), 1.5) : QPen(Qt::NoPen));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 4, 4);

    QFont shown = font();
    shown.setStrikeOut(m_condition.isOff);
    painter.setFont(shown);
    painter.setPen(palette().color(m_condition.isOff ? QPalette::PlaceholderText : QPalette::Text));
    const bool isFromLeft = layoutDirection() == Qt::LeftToRight;
    const QRect room = isFromLeft ? rect().adjusted(kPadding, 0, -kPadding - kCrossWidth, 0)
                                  : rect().adjusted(kPadding + kCrossWidth, 0, -kPadding, 0);
    painter.drawText(room, Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width()));
    const QPointF middle(isFromLeft ? width() - kPadding - kCrossSize : kPadding + kCrossSize,
                         height() / 2.0);
    painter.setPen(QPen(palette().color(QPalette::Text), 1.2));
    painter.drawLine(middle + QPointF(-kCrossSize, -kCrossSize), middle + QPointF(kCrossSize, kCrossSize));
    painter.drawLine(middle + QPointF(-kCrossSize, kCrossSize), middle + QPointF(kCrossSize, -kCrossSize));
}

void FilterChip::negate()
{
    FieldCondition turned = m_condition;
    turned.isNegated = !turned.isNegated;
    Q_EMIT changeRequested(m_number, turned);
}

void FilterChip::switchOver()
{
    FieldCondition switched = m_condition;
    switched.isOff = !switched.isOff;
    Q_EMIT changeRequested(m_number, switched);
}

void FilterChip::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier)
        switchOver();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Q_EMIT editRequested(m_number);
    else if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace)
        Q_EMIT removeRequested(m_number);
    else if (event->key() == Qt::Key_Minus)
        negate();
    else if (event->key() >= Qt::Key_Left && event->key() <= Qt::Key_Down)
        event->ignore(); // the row knows where they lead
    else
        QToolButton::keyPressEvent(event);
}

void FilterChip::mousePressEvent(QMouseEvent *event)
{
    m_isCrossPressed = event->button() == Qt::LeftButton && crossRect().contains(event->position().toPoint());
    if (!m_isCrossPressed)
        QToolButton::mousePressEvent(event);
}

void FilterChip::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_isCrossPressed)
        QToolButton::mouseReleaseEvent(event);
    else if (crossRect().contains(event->position().toPoint()))
        Q_EMIT removeRequested(m_number);
}

void FilterChip::contextMenuEvent(QContextMenuEvent *event)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("&Edit…"), this, [this] { Q_EMIT editRequested(m_number); });
    menu->addAction(
        tr("&Turn Round: %1").arg(FieldCondition::titleOf(m_condition.relation, !m_condition.isNegated)),
        this, &FilterChip::negate);
    menu->addAction(m_condition.isOff ? tr("&Switch On") : tr("&Switch Off"), this, &FilterChip::switchOver);
    menu->addAction(tr("&Remove"), this, [this] { Q_EMIT removeRequested(m_number); });
    menu->popup(event->reason() == QContextMenuEvent::Mouse ? event->globalPos()
                                                            : mapToGlobal(rect().bottomLeft()));
}

} // namespace runebook
