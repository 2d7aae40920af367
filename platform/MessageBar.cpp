#include "platform/MessageBar.h"

#include "platform/PlainText.h"
#include "platform/ShownText.h"

#include <QHBoxLayout>
#include <QIcon>
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

} // namespace

MessageBar::MessageBar(QWidget *parent)
    : QFrame(parent), m_layout(new QHBoxLayout(this)), m_label(plainLabel({}, this)), m_timer(new QTimer(this))
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
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    m_layout->setContentsMargins(10, 4, 6, 4);
    m_layout->addWidget(icon);
    m_layout->addWidget(m_label, 1);
    m_layout->addWidget(close);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &QWidget::hide);
    hide();
}

void MessageBar::showMessage(const QString &text, Stay stay)
{
    removeButtons();
    const QString shown = shownText(text, kMostInMessage);
    m_label->setText(shown);
    m_label->setAccessibleName(shown);
    m_timer->stop();
    if (stay == Stay::ShortTime)
        m_timer->start(kShortTimeMs);
    show();
}

void MessageBar::ask(const QString &text, const QList<Answer> &answers)
{
    showMessage(text, Stay::UntilClosed);
    for (const Answer &answer : answers) {
        auto *button = new QPushButton(answer.text, this);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, act = answer.act] {
            hide();
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

QString MessageBar::text() const
{
    return m_label->text();
}

} // namespace runebook
