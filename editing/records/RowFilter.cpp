#include "editing/records/RowFilter.h"

#include "editing/search/SlicedFilter.h"

namespace runebook {

void RowFilter::setPredicate(const std::optional<Predicate> &predicate, std::optional<IndexSet> passing)
{
    m_predicate = predicate;
    m_passing = std::move(passing);
}

std::optional<IndexSet> RowFilter::passingPlaces(Error *error)
{
    std::optional<IndexSet> passing;
    if (m_predicate && m_passing) {
        passing = m_passing;
    } else if (m_predicate) {
        passing = m_columns.placesPassing(*m_predicate, error);
        if (!passing)
            m_predicate.reset();
        else if (SlicedFilter::isFor(*m_predicate))
            m_passing = passing;
    }
    return meetingCondition(std::move(passing));
}

std::optional<IndexSet> RowFilter::placesPassing(const std::optional<Predicate> &predicate)
{
    return meetingCondition(predicate ? m_columns.placesPassing(*predicate) : std::nullopt);
}

std::optional<IndexSet> RowFilter::meetingCondition(std::optional<IndexSet> passing) const
{
    if (!m_condition)
        return passing;
    if (passing) {
        passing->removeIf([this](qsizetype place) { return !m_condition(place); });
        return passing;
    }
    passing.emplace();
    for (qsizetype place = 0; place < m_document.countOfInfos(); ++place) {
        if (m_condition(place))
            passing->push_back(place);
    }
    return passing;
}

std::optional<qsizetype> RowFilter::countPassing(const Predicate &predicate, int milliseconds)
{
    if (!m_columns.prepare(predicate, milliseconds))
        return {};
    const std::optional<IndexSet> passing = m_columns.placesPassing(predicate);
    return passing ? std::ssize(*passing) : 0;
}

} // namespace runebook
