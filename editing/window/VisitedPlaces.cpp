#include "editing/window/VisitedPlaces.h"

#include "document/VXDocument.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/WindowSearch.h"

#include <QMouseEvent>
#include <QScopedValueRollback>

namespace runebook {

VisitedPlaces::VisitedPlaces(const WindowParts &parts, WindowSearch &search, QObject *parent)
    : QObject(parent), m_parts(parts), m_search(search)
{
    connect(&m_search, &WindowSearch::leaving, this, &VisitedPlaces::leave);
    connect(&m_search, &WindowSearch::arrived, this, &VisitedPlaces::arrive);
    connect(&m_search, &WindowSearch::finished, this, &VisitedPlaces::noteSearch);
    m_parts.table.viewport()->installEventFilter(this);
    m_parts.window.installEventFilter(this);
}

// Remembering

VisitedPlaces::Place VisitedPlaces::here() const
{
    const int row = m_parts.table.currentIndex().row();
    return {m_parts.list.arrangedObjectAtIndex(row), m_parts.searchField.stringValue(), false};
}

void VisitedPlaces::push(const Place &place)
{
    constexpr std::size_t kMost = 200;
    m_places.resize(static_cast<std::size_t>(m_at + 1));
    if (!m_places.empty() && m_places.back().isSameAs(place))
        return;
    m_places.push_back(place);
    if (m_places.size() > kMost)
        m_places.erase(m_places.begin());
    m_at = std::ssize(m_places) - 1;
}

void VisitedPlaces::leave()
{
    m_isLeaving = true;
    if (!m_isGoing && !here().info.expired())
        push(here());
}

void VisitedPlaces::arrive()
{
    m_isLeaving = false;
    if (!m_isGoing && !here().info.expired())
        push(here());
}

void VisitedPlaces::noteSearch()
{
    if (m_isGoing || m_isLeaving)
        return;
    Place place = here();
    const bool hasPlace = m_at >= 0;
    const QString former = hasPlace ? m_places[static_cast<std::size_t>(m_at)].search : QString();
    if (place.search == former || (place.search.isEmpty() && former.isEmpty()))
        return;
    place.isSearch = true;
    if (hasPlace && m_places[static_cast<std::size_t>(m_at)].isSearch) {
        m_places.resize(static_cast<std::size_t>(m_at + 1));
        m_places.back() = place;
        return;
    }
    if (m_parts.list.selectedCount() > 0)
        push({place.info, former, false});
    push(place);
}

// Going

std::ptrdiff_t VisitedPlaces::placeInDirection(int step) const
{
    const Place current = here();
    // Whoever has moved on from the last place comes back to it first.
    std::ptrdiff_t at = m_at;
    const bool isElsewhere = at >= 0 && !m_places[static_cast<std::size_t>(at)].isSameAs(current);
    if (!isElsewhere || step > 0)
        at += step;
    for (; at >= 0 && at < std::ssize(m_places); at += step) {
        const Place &place = m_places[static_cast<std::size_t>(at)];
        const InfoPtr info = place.info.lock();
        const bool isThere = info && info->listings() > 0 && m_parts.document.placeOf(info.get()) >= 0;
        const bool isEmptySearch = !info && place.isSearch;
        if ((isThere || isEmptySearch) && !place.isSameAs(current))
            return at;
    }
    return -1;
}

bool VisitedPlaces::canGo(int step) const
{
    return placeInDirection(step) >= 0;
}

void VisitedPlaces::go(int step)
{
    const std::ptrdiff_t at = placeInDirection(step);
    if (at < 0)
        return;
    const Place here = this->here();
    // What was left without a jump can be come back to.
    if (step < 0 && m_at == std::ssize(m_places) - 1 && !here.info.expired()
        && !m_places.back().isSameAs(here)) {
        m_places.push_back(here);
    }
    m_at = at;
    show(Place(m_places[static_cast<std::size_t>(at)]));
}

void VisitedPlaces::show(const Place &place)
{
    const QScopedValueRollback going(m_isGoing, true);
    if (m_parts.searchField.stringValue() != place.search) {
        m_parts.searchField.setStringValue(place.search);
        m_search.filterInfos();
    }
    const InfoPtr info = place.info.lock();
    if (!m_search.isFiltering()) {
        m_search.showInfo(info);
        return;
    }
    auto *waiting = new QObject(this);
    connect(&m_search, &WindowSearch::finished, waiting, [this, waiting, info] {
        waiting->deleteLater();
        waiting->disconnect();
        m_search.disconnect(waiting);
        const QScopedValueRollback later(m_isGoing, true);
        m_search.showInfo(info);
    });
}

bool VisitedPlaces::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick) {
        const Qt::MouseButton button = static_cast<QMouseEvent *>(event)->button();
        if (button == Qt::BackButton || button == Qt::ForwardButton) {
            go(button == Qt::BackButton ? -1 : 1);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace runebook
