#include "editing/search/FlowLayout.h"

#include <QStyle>
#include <QWidget>

namespace runebook {

FlowLayout::FlowLayout(QWidget *parent) : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(4);
}

FlowLayout::~FlowLayout() = default;

void FlowLayout::addItem(QLayoutItem *item)
{
    m_items.emplace_back(item);
}

QLayoutItem *FlowLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem *FlowLayout::takeAt(int index)
{
    if (!itemAt(index))
        return nullptr;
    const auto at = m_items.begin() + index;
    QLayoutItem *taken = at->release();
    m_items.erase(at);
    return taken;
}

QSize FlowLayout::minimumSize() const
{
    // An item that is wider than the line is cut, not the window made wider.
    int height = 0;
    for (const auto &item : m_items)
        height = qMax(height, item->sizeHint().height());
    const QMargins margins = contentsMargins();
    return {margins.left() + margins.right(), height + margins.top() + margins.bottom()};
}

void FlowLayout::setGeometry(const QRect &room)
{
    QLayout::setGeometry(room);
    place(room, true);
}

int FlowLayout::place(const QRect &room, bool isMoving) const
{
    const QRect inner = room.marginsRemoved(contentsMargins());
    int x = inner.x();
    int y = inner.y();
    int lineHeight = 0; // of all lines: what stands beside each other has its middle in common
    for (const auto &item : m_items)
        lineHeight = item->isEmpty() ? lineHeight : qMax(lineHeight, item->sizeHint().height());
    for (const auto &item : m_items) {
        if (item->isEmpty())
            continue;
        const QSize size = item->sizeHint().boundedTo({inner.width(), QWIDGETSIZE_MAX});
        if (x > inner.x() && x + size.width() > inner.right() + 1) {
            x = inner.x();
            y += lineHeight + spacing();
        }
        if (isMoving) {
            const auto direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
            item->setGeometry(QStyle::visualRect(
                direction, inner, QRect(QPoint(x, y + (lineHeight - size.height()) / 2), size)));
        }
        x += size.width() + spacing();
    }
    return y + lineHeight - room.y() + contentsMargins().bottom();
}

} // namespace runebook
