#include "editing/fields/ErrorBubble.h"

#include "editing/fields/SignalColors.h"
#include "platform/ShownText.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QPainter>
#include <QTimer>
#include <chrono>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kPadding = 8;
constexpr qreal kRadius = 4;
constexpr int kWidest = 320;

} // namespace

void ErrorBubble::remark(QWidget *control, const QString &text, const QRect &area)
{
    if (!text.isEmpty())
        say(control, {u"Runebook"_s, 0, text, {}, {}}, area, Tone::Remark);
}

void ErrorBubble::show(QWidget *control, const Error &error, const QRect &area)
{
    say(control, error, area, Tone::Refusal);
}

void ErrorBubble::say(QWidget *control, const Error &error, const QRect &area, Tone tone)
{
    if (!control || !control->isVisible()) {
        ErrorPresenter::shared().present(error);
        return;
    }
    for (ErrorBubble *earlier : control->window()->findChildren<ErrorBubble *>())
        delete earlier;
    auto *bubble = new ErrorBubble(control, shownText(error.text(), kMostInMessage), tone);
    bubble->placeAt(*control, area.isNull() ? control->rect() : area);
    bubble->QLabel::show();
    bubble->raise();
    QAccessibleEvent alert(bubble, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

ErrorBubble::ErrorBubble(QWidget *control, const QString &text, Tone tone)
    : QLabel(control->window()), m_tone(tone)
{
    setTextFormat(Qt::PlainText);
    setText(text);
    setWordWrap(true);
    setMargin(kPadding);
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(text);
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText,
                    tone == Tone::Refusal ? QColor(Qt::white) : colors.color(QPalette::ToolTipText));
    setPalette(colors);
    control->installEventFilter(this);
    connect(control, &QObject::destroyed, this, &QObject::deleteLater);
    QTimer::singleShot(6s, this, &QObject::deleteLater);
}

void ErrorBubble::placeAt(const QWidget &control, const QRect &area)
{
    const QRect room = parentWidget()->rect().adjusted(4, 4, -4, -4);
    const int width =
        std::min({kWidest, room.width(), fontMetrics().horizontalAdvance(text()) + 2 * kPadding + 2});
    resize(width, heightForWidth(width));
    const QRect below(control.mapTo(parentWidget(), area.bottomLeft() + QPoint(0, 4)), size());
    const int x = std::clamp(below.x(), room.left(), std::max(room.left(), room.right() - width));
    const bool fitsBelow = below.bottom() <= room.bottom();
    move(x, fitsBelow ? below.y() : control.mapTo(parentWidget(), area.topLeft()).y() - height() - 3);
}

bool ErrorBubble::eventFilter(QObject *watched, QEvent *event)
{
    const bool isOver = event->type() == QEvent::KeyPress || event->type() == QEvent::FocusOut
        || event->type() == QEvent::Hide || event->type() == QEvent::Move;
    if (isOver)
        deleteLater();
    return QLabel::eventFilter(watched, event);
}

void ErrorBubble::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_tone == Tone::Refusal) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(SignalColors::error(palette()));
    } else {
        painter.setPen(palette().color(QPalette::Mid));
        painter.setBrush(palette().color(QPalette::ToolTipBase));
    }
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
    painter.end();
    QLabel::paintEvent(event);
}

} // namespace runebook
