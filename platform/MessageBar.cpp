#include "platform/MessageBar.h"

#include "platform/PlainLabel.h"
#include "platform/ShownText.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QToolButton>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kShortTimeMs = 8000;
constexpr int kTogetherMs = 1000; // nobody has read the former in that time

} // namespace

MessageBar::MessageBar(QWidget *parent)
    : QFrame(parent),
      m_layout(new QHBoxLayout(this)),
      m_label(plainLabel({}, this)),
      m_timer(new QTimer(this))
{
    setFrameShape(StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto *icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(18));
    auto *close = new QToolButton(this);
    close->setIcon(QIcon(u":/icons/clear.svg"_s));
    close->setAutoRaise(true);
    close->setAccessibleName(tr("Close the message"));
    connect(close, &QToolButton::clicked, this, [this] {
        forgetStanding();
        leave();
    });
    m_layout->setContentsMargins(10, 4, 6, 4);
    m_layout->addWidget(icon);
    m_layout->addWidget(m_label, 1);
    m_layout->addWidget(close);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &MessageBar::leave);
    hide();
}

void MessageBar::showMessage(const QString &text, Stay stay)
{
    const bool isPassing = stay == Stay::ShortTime;
    const bool isTogether = isPassing && !isHidden() && m_timer->remainingTime() > kShortTimeMs - kTogetherMs;
    removeButtons();
    const QString shown = shownText(text, kMostInMessage);
    if (isTogether && !this->text().contains(shown))
        showText(this->text() + u'\n' + shown);
    else if (!isTogether)
        showText(belowStanding(shown));
    if (isPassing)
        m_timer->start(kShortTimeMs);
    else
        m_standing = this->text();
    addButtons(m_standingAnswers);
}

QString MessageBar::belowStanding(const QString &text)
{
    if (isHidden())
        forgetStanding(); // somebody else has closed it
    if (m_standing.isEmpty() || text == m_standing)
        return text;
    return m_standing.contains(text) ? m_standing : m_standing + u'\n' + text;
}

void MessageBar::showText(const QString &text)
{
    m_timer->stop();
    const QString shown = shownText(text, 2 * kMostInMessage);
    m_label->setText(shown);
    m_label->setAccessibleName(shown);
    show();
    QAccessibleEvent alert(m_label, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

/// Goes, but for what stands until it is closed.
void MessageBar::leave()
{
    removeButtons();
    if (m_standing.isEmpty())
        hide();
    else
        showText(m_standing);
    addButtons(m_standingAnswers);
}

void MessageBar::forgetStanding()
{
    m_standing.clear();
    m_standingAnswers.clear();
}

void MessageBar::ask(const QString &text, const QList<Answer> &answers, Stay stay)
{
    removeButtons();
    showText(belowStanding(shownText(text, kMostInMessage)));
    if (stay == Stay::UntilClosed) {
        m_standing = this->text();
        m_standingAnswers = answers;
    }
    addButtons(stay == Stay::UntilClosed ? m_standingAnswers : answers);
}

void MessageBar::addButtons(const QList<Answer> &answers)
{
    for (const Answer &answer : answers) {
        auto *button = new QPushButton(answer.text, this);
        button->setAutoDefault(false);
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
        const bool isStanding = &answers == &m_standingAnswers;
        connect(button, &QPushButton::clicked, this, [this, act = answer.act, isStanding] {
            if (isStanding)
                forgetStanding();
            leave();
            act();
        });
        m_layout->insertWidget(m_layout->count() - 1, button);
        m_buttons << button;
    }
}

void MessageBar::removeButtons()
{
    // One of them may be the one that was just clicked.
    for (QPushButton *button : std::exchange(m_buttons, {})) {
        button->hide();
        button->deleteLater();
    }
}

void MessageBar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape) {
        QFrame::keyPressEvent(event);
        return;
    }
    forgetStanding();
    leave();
}

QString MessageBar::text() const
{
    return m_label->text();
}

} // namespace runebook
