#include "editing/search/RecordFilter.h"

#include "platform/predicates/PredicateFormat.h"

#include <algorithm>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Join = RecordFilter::Join;
using Member = RecordFilter::Member;
using Relation = FieldCondition::Relation;

// From the tree of a predicate

Member negated(Member member)
{
    if (auto *condition = std::get_if<FieldCondition>(&member))
        condition->isNegated = !condition->isNegated;
    else
        std::get<RecordFilter>(member).setNegated(!std::get<RecordFilter>(member).isNegated());
    return member;
}

FieldCondition conditionOf(const QString &key, Relation relation, const QStringList &values, Folding folding)
{
    FieldCondition condition;
    condition.key = key;
    condition.relation = relation;
    condition.values = values;
    condition.folding = folding;
    return condition;
}

Member memberOf(const TextTest &test)
{
    using Compared = TextTest::Relation;
    if (test.relation == Compared::NotEqual && test.spelled.isEmpty())
        return negated(conditionOf(test.key, Relation::IsEmpty, {}, {}));
    const auto relation = [&] {
        switch (test.relation) {
        case Compared::Contains:
            return Relation::Contains;
        case Compared::BeginsWith:
            return Relation::BeginsWith;
        case Compared::EndsWith:
            return Relation::EndsWith;
        case Compared::Equal:
            return Relation::Is;
        case Compared::NotEqual:
            break;
        }
        return Relation::IsOther;
    };
    return conditionOf(test.key, relation(), {test.spelled}, test.folding);
}

Member memberOf(const NumberTest &test)
{
    using Compared = NumberTest::Relation;
    const auto relation = [&] {
        switch (test.relation) {
        case Compared::Equal:
            return Relation::Equals;
        case Compared::NotEqual:
            return Relation::Differs;
        case Compared::Less:
            return Relation::Less;
        case Compared::LessOrEqual:
            return Relation::AtMost;
        case Compared::Greater:
            return Relation::Greater;
        case Compared::GreaterOrEqual:
            break;
        }
        return Relation::AtLeast;
    };
    return conditionOf(test.key, relation(), {PredicateFormat::decimal(test.number)}, {});
}

Member memberOf(const ListTest &test)
{
    QStringList values = test.spelled;
    values.removeAll(QString()); // they pass nothing here; in a condition they stand for none
    values.removeDuplicates();
    return conditionOf(test.key, Relation::In, values, test.folding);
}

Member memberOf(const HexRangeTest &test)
{
    const auto digits = [](quint32 value) {
        return QString::number(value, 16).toUpper().rightJustified(4, u'0');
    };
    return conditionOf(test.key, Relation::InRange, {digits(test.range.first), digits(test.range.last)}, {});
}

Member memberOf(const PatternTest &test)
{
    return conditionOf(test.key, Relation::Matches, {test.pattern.pattern()}, test.pattern.folding());
}

Member memberOf(const PredicateNode &node);

/// A list whose empty value stands for none is written as two tests; here they are one again.
bool joinListAndEmpty(std::vector<Member> &members)
{
    if (members.size() != 2)
        return false;
    auto *list = std::get_if<FieldCondition>(&members[0]);
    const auto *empty = std::get_if<FieldCondition>(&members[1]);
    if (!list || !empty || list->key != empty->key || list->relation != Relation::In || list->isNegated
        || empty->relation != Relation::IsEmpty || empty->isNegated)
        return false;
    list->values += u""_s;
    members.pop_back();
    return true;
}

Member memberOf(const PredicateGroup &group)
{
    if (group.kind == PredicateGroup::Kind::None)
        return negated(memberOf(group.members.front()));
    const Join join = group.kind == PredicateGroup::Kind::All ? Join::All : Join::Any;
    std::vector<Member> members;
    for (const PredicateNode &member : group.members)
        members.push_back(memberOf(member));
    if (join == Join::Any && joinListAndEmpty(members))
        return std::move(members.front());
    return RecordFilter(join, std::move(members));
}

Member memberOf(const PredicateNode &node)
{
    return std::visit([](const auto &test) { return memberOf(test); }, node.test);
}

/// Calls \a visit with each condition of \a filter until it answers false.
template <typename Visit> bool forEachCondition(const RecordFilter &filter, Visit visit)
{
    return std::all_of(filter.members().begin(), filter.members().end(), [&](const Member &member) {
        const auto *condition = std::get_if<FieldCondition>(&member);
        return condition ? visit(*condition) : forEachCondition(std::get<RecordFilter>(member), visit);
    });
}

bool asksNothing(const Member &member)
{
    if (const auto *condition = std::get_if<FieldCondition>(&member))
        return condition->isOff;
    // A group of nothing at all is a constant, which asks.
    const auto &members = std::get<RecordFilter>(member).members();
    return !members.empty() && std::all_of(members.begin(), members.end(), asksNothing);
}

QString constantText(bool isTrue)
{
    return isTrue ? u"TRUEPREDICATE"_s : u"FALSEPREDICATE"_s;
}

QString groupText(const RecordFilter &group);

QString memberText(const Member &member, bool isAlone)
{
    if (const auto *condition = std::get_if<FieldCondition>(&member))
        return condition->text();
    const auto &group = std::get<RecordFilter>(member);
    const QString text = groupText(group);
    if (group.isNegated())
        return "!("_L1 + text + u')';
    return isAlone ? text : u'(' + text + u')';
}

/// Without regard to its own negation.
QString groupText(const RecordFilter &group)
{
    QStringList texts;
    const auto asking = std::count_if(group.members().begin(), group.members().end(),
                                      [](const Member &member) { return !asksNothing(member); });
    for (const Member &member : group.members()) {
        if (!asksNothing(member))
            texts += memberText(member, asking == 1);
    }
    if (texts.isEmpty())
        return constantText(group.join() == Join::All);
    return texts.join(group.join() == Join::All ? " && "_L1 : " || "_L1);
}

Error unknownKeyError(const QString &key)
{
    QStringList ids;
    for (const FieldAspect &aspect : FieldAspect::all())
        ids += aspect.id();
    return {Predicate::errorDomain(), Predicate::SyntaxError,
            QCoreApplication::translate("RecordFilter", "The filter is not understood."),
            QCoreApplication::translate("RecordFilter", "Records have no field “%1”.").arg(key.left(60)),
            QCoreApplication::translate("RecordFilter", "Fields are: %1").arg(ids.join(", "_L1))};
}

} // namespace

RecordFilter::RecordFilter(Join join, std::vector<Member> members)
    : m_join(join), m_members(std::move(members))
{
}

std::optional<RecordFilter> RecordFilter::parse(const QString &text, Error *error)
{
    if (text.trimmed().isEmpty())
        return RecordFilter();
    const std::optional<Predicate> predicate = Predicate::parse(text, error);
    if (!predicate)
        return {};
    RecordFilter filter;
    filter.m_members.push_back(memberOf(predicate->root()));
    QString unknown;
    forEachCondition(filter, [&unknown](const FieldCondition &condition) {
        if (SearchKey::of(condition.key).kind == SearchKey::Kind::Unknown)
            unknown = condition.key;
        return unknown.isNull();
    });
    if (!unknown.isNull()) {
        fail(error, unknownKeyError(unknown));
        return {};
    }
    filter.simplify();
    return filter;
}

QString RecordFilter::text() const
{
    if (isEmpty() || asksNothing(Member(*this)))
        return {};
    return memberText(Member(*this), true);
}

std::optional<Predicate> RecordFilter::predicate(Error *error) const
{
    const QString whole = text();
    return whole.isEmpty() ? std::nullopt : Predicate::parse(whole, error);
}

const FieldCondition *RecordFilter::listCondition(const FieldAspect &aspect, bool isNegated) const
{
    if (m_join != Join::All || m_isNegated)
        return nullptr;
    for (const Member &member : m_members) {
        const auto *condition = std::get_if<FieldCondition>(&member);
        if (condition && condition->key == aspect.id() && condition->relation == Relation::In
            && condition->isNegated == isNegated && !condition->folding && !condition->isOff)
            return condition;
    }
    return nullptr;
}

int RecordFilter::countOfConditions() const
{
    int count = 0;
    forEachCondition(*this, [&count](const FieldCondition &) {
        ++count;
        return true;
    });
    return count;
}

void RecordFilter::setOff(bool isOff)
{
    for (Member &member : m_members) {
        if (auto *condition = std::get_if<FieldCondition>(&member))
            condition->isOff = isOff;
        else
            std::get<RecordFilter>(member).setOff(isOff);
    }
}

void RecordFilter::add(const FieldCondition &condition)
{
    if ((m_join == Join::Any && m_members.size() > 1) || m_isNegated) {
        RecordFilter whole = std::exchange(*this, RecordFilter());
        m_members.emplace_back(std::move(whole));
    }
    m_join = Join::All;
    m_members.emplace_back(condition);
}

void RecordFilter::setListCondition(const FieldCondition &condition)
{
    const std::optional<FieldAspect> aspect = FieldAspect::of(condition.key);
    const FieldCondition *there = aspect ? listCondition(*aspect, condition.isNegated) : nullptr;
    if (!there) {
        if (!condition.values.isEmpty())
            add(condition);
        return;
    }
    const auto member = std::find_if(m_members.begin(), m_members.end(), [there](const Member &each) {
        return std::get_if<FieldCondition>(&each) == there;
    });
    if (condition.values.isEmpty())
        m_members.erase(member);
    else
        *member = condition;
}

void RecordFilter::simplify()
{
    std::vector<Member> members;
    for (Member &member : m_members) {
        auto *group = std::get_if<RecordFilter>(&member);
        if (!group) {
            members.push_back(std::move(member));
            continue;
        }
        group->simplify();
        const bool isSame = group->m_join == m_join || group->m_members.size() == 1;
        if (isSame && !group->m_isNegated && !group->m_members.empty())
            std::move(group->m_members.begin(), group->m_members.end(), std::back_inserter(members));
        else if (isSame && group->m_members.size() == 1)
            members.push_back(negated(std::move(group->m_members.front())));
        else
            members.push_back(std::move(member));
    }
    m_members = std::move(members);
    if (m_members.size() != 1)
        return;
    // The whole is its only member, as long as that is a group.
    if (auto *only = std::get_if<RecordFilter>(&m_members.front()); only && !only->m_members.empty()) {
        RecordFilter inner = std::move(*only);
        inner.m_isNegated = inner.m_isNegated != m_isNegated;
        *this = std::move(inner);
    } else if (std::holds_alternative<FieldCondition>(m_members.front())) {
        m_join = Join::All;
        if (std::exchange(m_isNegated, false))
            m_members.front() = negated(std::move(m_members.front()));
    }
}

} // namespace runebook
