#include "editing/search/FilterTokens.h"

#include <algorithm>

namespace runebook {

namespace {

using Join = RecordFilter::Join;
using Kind = FilterToken::Kind;
using Member = RecordFilter::Member;

int countOf(const Member &member)
{
    const auto *group = std::get_if<RecordFilter>(&member);
    return group ? group->countOfConditions() : 1;
}

class TokenRow
{
public:
    void addGroup(const RecordFilter &group, bool isWhole)
    {
        const bool isOpened = !isWhole || group.isNegated();
        if (isOpened)
            add({group.isNegated() ? Kind::NotOpen : Kind::Open});
        if (group.members().empty())
            add({group.join() == Join::All ? Kind::Everything : Kind::Nothing});
        bool isFirst = true;
        for (const Member &member : group.members()) {
            if (!isFirst)
                add({Kind::Join, m_count > 0 && countOf(member) > 0 ? m_count - 1 : -1, group.join()});
            isFirst = false;
            if (const auto *inner = std::get_if<RecordFilter>(&member))
                addGroup(*inner, false);
            else
                add({Kind::Condition, m_count++});
        }
        if (isOpened)
            add({Kind::Close});
    }
    std::vector<FilterToken> tokens;

private:
    void add(const FilterToken &token) { tokens.push_back(token); }

    int m_count = 0;
};

template <typename Filter>
using ConditionOf = std::conditional_t<std::is_const_v<Filter>, const FieldCondition, FieldCondition>;

/// The condition with that number in \a filter, a constant one or not.
template <typename Filter> ConditionOf<Filter> *find(Filter &filter, int number)
{
    ConditionOf<Filter> *found = nullptr;
    for (auto &member : filter.members()) {
        const int count = countOf(member);
        if (number < count) {
            if (auto *group = std::get_if<RecordFilter>(&member))
                return find(*group, number);
            found = &std::get<FieldCondition>(member);
            break;
        }
        number -= count;
    }
    return found;
}

void joinOtherwise(RecordFilter &group, std::size_t first)
{
    const Join other = group.join() == Join::All ? Join::Any : Join::All;
    std::vector<Member> &members = group.members();
    if (members.size() == 2) {
        group.setJoin(other);
        return;
    }
    const auto place = members.begin() + static_cast<std::ptrdiff_t>(first);
    std::vector<Member> pair {std::move(place[0]), std::move(place[1])};
    *place = RecordFilter(other, std::move(pair));
    members.erase(place + 1);
}

void toggle(RecordFilter &group, int number)
{
    for (std::size_t i = 0; i < group.members().size(); ++i) {
        const int count = countOf(group.members()[i]);
        if (number == count - 1) {
            if (i + 1 < group.members().size())
                joinOtherwise(group, i);
            return;
        }
        if (number < count) {
            toggle(std::get<RecordFilter>(group.members()[i]), number);
            return;
        }
        number -= count;
    }
}

bool remove(RecordFilter &group, int number)
{
    std::vector<Member> &members = group.members();
    for (auto member = members.begin(); member != members.end(); ++member) {
        const int count = countOf(*member);
        if (number >= count) {
            number -= count;
            continue;
        }
        auto *inner = std::get_if<RecordFilter>(&*member);
        if (!inner || (remove(*inner, number) && inner->members().empty()))
            members.erase(member);
        return true;
    }
    return false;
}

} // namespace

std::vector<FilterToken> tokensOf(const RecordFilter &filter)
{
    TokenRow row;
    if (!filter.isEmpty())
        row.addGroup(filter, true);
    return row.tokens;
}

const FieldCondition &conditionAt(const RecordFilter &filter, int number)
{
    return *find(filter, number);
}

void setConditionAt(RecordFilter &filter, int number, const FieldCondition &condition)
{
    *find(filter, number) = condition;
}

void removeConditionAt(RecordFilter &filter, int number)
{
    remove(filter, number);
    if (filter.members().empty())
        filter = RecordFilter();
    filter.simplify();
}

void toggleJoinAfter(RecordFilter &filter, int number)
{
    toggle(filter, number);
    filter.simplify();
}

} // namespace runebook
