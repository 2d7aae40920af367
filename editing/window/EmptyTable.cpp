#include "editing/window/EmptyTable.h"

#include "platform/PlainLabel.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace runebook {

namespace {

constexpr int kWidest = 460;
constexpr qsizetype kOneColumn = 4; // offers below each other, before they take two columns

} // namespace

EmptyTable::EmptyTable(QWidget *area)
    : QWidget(area),
      m_title(plainLabel({}, this)),
      m_hint(plainLabel({}, this)),
      m_layout(new QVBoxLayout(this))
{
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.35);
    m_title->setFont(large);
    for (QLabel *label : {m_title, m_hint}) {
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
    }
    m_hint->setForegroundRole(QPalette::PlaceholderText);
    m_layout->setContentsMargins(16, 16, 16, 16);
    m_layout->setSpacing(10);
    m_layout->addWidget(m_title);
    m_layout->addWidget(m_hint);
    area->installEventFilter(this);
    hide();
}

void EmptyTable::showNotice(const Notice &notice)
{
    // The offers have functions of their moment: only what looks the same and is shown may stay.
    if (notice == m_notice && isVisibleTo(parentWidget()))
        return;
    m_notice = notice;
    setVisible(!notice.title.isNull());
    if (notice.title.isNull())
        return;
    m_title->setText(notice.title);
    m_hint->setText(notice.hint);
    m_hint->setVisible(!notice.hint.isEmpty());
    setAccessibleName(notice.title);
    setAccessibleDescription(notice.hint);
    if (m_buttons) {
        m_layout->removeWidget(m_buttons); // or it keeps its room
        m_buttons->hide();
        m_buttons->deleteLater();
    }
    m_buttons = new QWidget(this);
    auto *grid = new QGridLayout(m_buttons);
    grid->setContentsMargins(0, 4, 0, 0);
    grid->setSpacing(6);
    const int columns = notice.offers.size() > kOneColumn ? 2 : 1;
    int index = 0;
    for (const Offer &offer : notice.offers) {
        auto *button = new QPushButton(offer.text, m_buttons);
        button->setAutoDefault(false);
        button->setMinimumWidth(180);
        connect(button, &QPushButton::clicked, this, [act = offer.act] { act(); });
        grid->addWidget(button, index / columns, index % columns);
        ++index;
    }
    m_layout->addWidget(m_buttons, 0, Qt::AlignHCenter);
    m_buttons->show();
    place();
    raise();
}

void EmptyTable::place()
{
    const QSize room = parentWidget()->size();
    const int width = qMin(kWidest, room.width());
    const int height = qMin(room.height(),
                            m_layout->hasHeightForWidth() ? m_layout->totalHeightForWidth(width)
                                                          : m_layout->totalSizeHint().height());
    setGeometry((room.width() - width) / 2, qMax(0, (room.height() - height) * 2 / 5), width, height);
}

bool EmptyTable::eventFilter(QObject *watched, QEvent *event)
{
    // Also before the window is shown: what is laid out by then is not told of again.
    if (watched == parentWidget() && event->type() == QEvent::Resize && !isHidden())
        place();
    return QWidget::eventFilter(watched, event);
}

} // namespace runebook
