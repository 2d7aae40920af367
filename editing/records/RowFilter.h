#pragma once

#include "document/VXDocument.h"
#include "editing/search/SearchColumns.h"
#include "platform/predicates/Predicate.h"

#include <functional>

namespace runebook {

/// Which records of a document are shown: those that pass a predicate, and a condition besides. It knows what
/// passed until it is told of a change. Main thread only.
class RowFilter
{
public:
    using Condition = std::function<bool(qsizetype place)>;

    explicit RowFilter(const VXDocument &document) : m_document(document), m_columns(document) { }

    /// What answers predicates; it is to be told of every change.
    SearchColumns &columns() { return m_columns; }
    const SearchColumns &columns() const { return m_columns; }
    /// Null: everything passes.
    const std::optional<Predicate> &predicate() const { return m_predicate; }
    /// \a passing: what passes of the list as it is now, where somebody has found it out.
    void setPredicate(const std::optional<Predicate> &predicate, std::optional<IndexSet> passing = {});
    bool hasCondition() const { return m_condition != nullptr; }
    /// Asked whenever the rows are arranged; null: none.
    void setCondition(Condition condition) { m_condition = std::move(condition); }
    /// Whether records may be hidden.
    bool isSet() const { return m_predicate || m_condition; }
    /// A record or the list has changed.
    void forgetPassing() { m_passing.reset(); }

    /// The places that pass; nothing: all. A predicate that gives up (a regular expression without end) goes,
    /// with an error.
    std::optional<IndexSet> passingPlaces(Error *error);
    /// The same under another predicate (null: none), which is to be ready.
    std::optional<IndexSet> placesPassing(const std::optional<Predicate> &predicate);
    /// Those of \a passing (nothing: of all) that meet the condition.
    std::optional<IndexSet> meetingCondition(std::optional<IndexSet> passing) const;
    /// How many pass \a predicate. Nothing while that is not ready after about \a milliseconds.
    std::optional<qsizetype> countPassing(const Predicate &predicate, int milliseconds);

private:
    const VXDocument &m_document;
    SearchColumns m_columns;
    std::optional<Predicate> m_predicate;
    /// What passes the predicate of a regular expression, until a record changes: such a one takes long.
    std::optional<IndexSet> m_passing;
    Condition m_condition;
};

} // namespace runebook
