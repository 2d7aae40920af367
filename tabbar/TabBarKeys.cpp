#include "tabbar/TabBarKeys.h"

#include "tabbar/TabStrip.h"

#include <QKeyEvent>
#include <QShortcut>
#include <QWheelEvent>

namespace runebook {

TabBarKeys::TabBarKeys(TabStrip &bar) : m_bar(bar)
{
    struct Entry {
        void (TabBarKeys::*command)(int);
        QKeyCombination key;
        int step;
    };
    const Entry entries[] = {
        {&TabBarKeys::selectNeighbour, Qt::CTRL | Qt::Key_Tab, 1},
        {&TabBarKeys::selectNeighbour, Qt::CTRL | Qt::SHIFT | Qt::Key_Tab, -1},
        {&TabBarKeys::selectNeighbour, Qt::CTRL | Qt::Key_PageDown, 1},
        {&TabBarKeys::selectNeighbour, Qt::CTRL | Qt::Key_PageUp, -1},
        {&TabBarKeys::moveSelected, Qt::CTRL | Qt::SHIFT | Qt::Key_PageDown, 1},
        {&TabBarKeys::moveSelected, Qt::CTRL | Qt::SHIFT | Qt::Key_PageUp, -1},
    };
    for (const Entry &entry : entries) {
        auto *shortcut = new QShortcut(QKeySequence(entry.key), &bar.widget());
        QObject::connect(shortcut, &QShortcut::activated, &bar.widget(),
                         [this, entry] { (this->*entry.command)(entry.step); });
    }
}

int TabBarKeys::selection() const
{
    const QObject *selected = m_bar.selectedTabItem();
    return selected ? int(m_bar.indexOfTabItem(selected)) : -1;
}

void TabBarKeys::select(int index)
{
    const QList<PSMTabBarCell *> cells = m_bar.cells();
    if (index >= 0 && index < cells.size())
        m_bar.selectTabItem(cells.at(index)->representedObject());
}

void TabBarKeys::selectNeighbour(int step)
{
    const int count = int(m_bar.countOfTabItems());
    if (count == 0)
        return;
    const int from = selection() < 0 && step < 0 ? 0 : selection();
    select((from + step + count) % count);
}

void TabBarKeys::moveSelected(int step)
{
    QObject *item = m_bar.selectedTabItem();
    const int to = selection() + step;
    if (!item || to < 0 || to >= int(m_bar.countOfTabItems()))
        return;
    m_bar.moveQuietly(item, uint(to));
    m_bar.slide();
    m_bar.tellMoved(item);
}

bool TabBarKeys::press(const QKeyEvent &event)
{
    const bool isMirrored =
        m_bar.orientation() == Qt::Horizontal && m_bar.widget().layoutDirection() == Qt::RightToLeft;
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        selectNeighbour(isMirrored ? 1 : -1);
        return true;
    case Qt::Key_Right:
    case Qt::Key_Down:
        selectNeighbour(isMirrored ? -1 : 1);
        return true;
    case Qt::Key_Home:
        select(0);
        return true;
    case Qt::Key_End:
        select(int(m_bar.countOfTabItems()) - 1);
        return true;
    case Qt::Key_Delete:
        if (const PSMTabBarCell *cell = m_bar.cellForTabItem(m_bar.selectedTabItem());
            cell && !cell->isCloseButtonSuppressed())
            m_bar.closeTabItem(cell->representedObject());
        return true;
    default:
        return false;
    }
}

void TabBarKeys::turn(const QWheelEvent &event)
{
    constexpr int kNotch = 120;
    const QPoint delta = event.angleDelta();
    m_wheelDelta += std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
    for (; std::abs(m_wheelDelta) >= kNotch; m_wheelDelta -= m_wheelDelta > 0 ? kNotch : -kNotch) {
        if (selection() >= 0)
            select(selection() + (m_wheelDelta > 0 ? -1 : 1));
    }
}

} // namespace runebook
