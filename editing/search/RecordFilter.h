#pragma once

#include "editing/search/FieldCondition.h"
#include "platform/predicates/Predicate.h"

#include <QCoreApplication>
#include <optional>
#include <variant>
#include <vector>

namespace runebook {

/// Conditions joined by and, or and not: what is shown besides what the search finds. A group of conditions
/// and of groups; one without members that asks anything shows everything. A plain value.
class RecordFilter
{
    Q_DECLARE_TR_FUNCTIONS(RecordFilter)
public:
    enum class Join : quint8 { All, Any };
    using Member = std::variant<FieldCondition, RecordFilter>;

    RecordFilter() = default;
    explicit RecordFilter(Join join, std::vector<Member> members = {});
    /// The filter that \a text says: a predicate about fields that records have. Nothing and an error that
    /// says where it is not understood. An empty text is the empty filter.
    [[nodiscard]] static std::optional<RecordFilter> parse(const QString &text, Error *error = nullptr);

public: // asking
    Join join() const { return m_join; }
    bool isNegated() const { return m_isNegated; }
    const std::vector<Member> &members() const { return m_members; }
    /// Whether nothing is in it, not even a condition that is switched off.
    bool isEmpty() const { return m_members.empty() && m_join == Join::All && !m_isNegated; }
    /// The language of predicates, to be typed and read back; empty when nothing is asked. Conditions that are
    /// switched off are left out.
    QString text() const;
    /// What asks the records; nothing when all are shown. An error when the whole is too long.
    [[nodiscard]] std::optional<Predicate> predicate(Error *error = nullptr) const;
    /// The only condition on top that is about \a aspect and one of isOneOf() and isNoneOf(), when all
    /// conditions must be met; null when there is none.
    const FieldCondition *listCondition(const FieldAspect &aspect, bool isNegated) const;
    /// Whether it asks anything: not all of it is switched off.
    bool isAsking() const { return !text().isEmpty(); }
    /// How many conditions there are, those in groups too.
    int countOfConditions() const;
    friend bool operator==(const RecordFilter &, const RecordFilter &) = default;

public: // changing
    void setJoin(Join join) { m_join = join; }
    /// Switches all conditions off or on.
    void setOff(bool isOff);
    void setNegated(bool negated) { m_isNegated = negated; }
    std::vector<Member> &members() { return m_members; }
    /// From now on \a condition has to be met, too.
    void add(const FieldCondition &condition);
    /// Puts \a condition where listCondition() of its aspect and negation is, or adds it; without values it
    /// goes.
    void setListCondition(const FieldCondition &condition);
    /// Groups of one member become that member, groups joined as the one around them a part of it.
    void simplify();

private:
    Join m_join = Join::All;
    bool m_isNegated = false;
    std::vector<Member> m_members;
};

} // namespace runebook
