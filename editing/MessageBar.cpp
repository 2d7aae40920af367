#include "editing/MessageBar.h"

#include "platform/PlainText.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>
#include <QTimer>
#include <QToolButton>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kShortTimeMs = 8000;

} // namespace

MessageBar::MessageBar(QWidget *parent)
    : QFrame(parent), m_label(plainLabel({}, this)), m_timer(new QTimer(this))
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
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    layout->addWidget(icon);
    layout->addWidget(m_label, 1);
    layout->addWidget(close);
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &QWidget::hide);
    hide();
}

void MessageBar::showMessage(const QString &text, Stay stay)
{
    m_label->setText(text);
    m_label->setAccessibleName(text);
    m_timer->stop();
    if (stay == Stay::ShortTime)
        m_timer->start(kShortTimeMs);
    show();
}

QString MessageBar::text() const
{
    return m_label->text();
}

} // namespace runebook
