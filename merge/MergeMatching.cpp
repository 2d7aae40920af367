#include "merge/MergeMatching.h"

#include "platform/ParallelParts.h"
#include "platform/ShownText.h"

#include <QCoreApplication>
#include <algorithm>
#include <unordered_map>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(MergeMatching)
};

using Places = std::vector<MergePlace>;

constexpr qsizetype kShownKey = 100;

/// The records with the key of \a example, in their order.
Places placesOfKey(const MergeTable &table, const MergeTable &other, MergePlace example)
{
    const MergePlace first = table.find(other, example);
    if (first == kNoPlace)
        return {};
    const Places *places = table.repeatedFrom(first);
    return places ? *places : Places {first};
}

/// Pairs the lines that two lists of places have in common, each once; leaves the others in the lists.
template <typename Pair>
void pairEqualLines(const MergeTable &left, Places &lefts, const MergeTable &right, Places &rights,
                    const Pair &pair)
{
    std::unordered_map<std::string_view, Places> byLine;
    for (auto place = rights.rbegin(); place != rights.rend(); ++place)
        byLine[right.line(*place)].push_back(*place);
    Places paired;
    std::erase_if(lefts, [&](MergePlace place) {
        const auto found = byLine.find(left.line(place));
        if (found == byLine.end() || found->second.empty())
            return false;
        pair(place, found->second.back());
        paired.push_back(found->second.back());
        found->second.pop_back();
        return true;
    });
    std::sort(paired.begin(), paired.end());
    std::erase_if(rights, [&paired](MergePlace place) {
        return std::binary_search(paired.begin(), paired.end(), place);
    });
}

} // namespace

MergeMatching::MergeMatching(const MergeTables &tables) : m_tables(&tables)
{
    for (std::size_t side : {0u, 1u}) {
        const MergeTable &table = side == 0 ? tables.ours() : tables.theirs();
        m_ofBase[side].assign(tables.base().count(), kNoPlace);
        m_baseOf[side].assign(table.count(), kNoPlace);
    }
    m_theirsOfOurs.assign(tables.ours().count(), kNoPlace);
    m_oursOfTheirs.assign(tables.theirs().count(), kNoPlace);
}

std::optional<MergeMatching> MergeMatching::of(const MergeTables &tables, Error *error)
{
    MergeMatching matching(tables);
    if (!matching.matchRepeated(error))
        return {};
    inParallel(2, [&matching](qsizetype side) { matching.matchSide(std::size_t(side)); });
    matching.matchAdditions();
    return matching;
}

void MergeMatching::pair(std::size_t side, MergePlace base, MergePlace place)
{
    m_ofBase[side][base] = place;
    m_baseOf[side][place] = base;
}

bool MergeMatching::matchRepeated(Error *error)
{
    for (const MergeSide side : {MergeSide::Base, MergeSide::Ours, MergeSide::Theirs}) {
        for (const Places &places : (*m_tables)[side].repeated()) {
            std::vector<bool> &isKnown = m_isRepeated[std::size_t(side)];
            if (!isKnown.empty() && isKnown[places.front()])
                continue;
            if (!matchGroup(places.front(), side, error))
                return false;
        }
    }
    return true;
}

bool MergeMatching::matchGroup(MergePlace example, MergeSide side, Error *error)
{
    std::array<Places, 3> groups;
    for (const MergeSide each : {MergeSide::Base, MergeSide::Ours, MergeSide::Theirs}) {
        Places &group = groups[std::size_t(each)];
        group = placesOfKey((*m_tables)[each], (*m_tables)[side], example);
        std::vector<bool> &isRepeated = m_isRepeated[std::size_t(each)];
        isRepeated.resize((*m_tables)[each].count());
        for (const MergePlace place : group)
            isRepeated[place] = true;
    }
    // What stays are the changes: lines that went, and lines that came.
    std::array<Places, 2> gone {groups[0], groups[0]};
    std::array<Places, 2> come {groups[1], groups[2]};
    for (const std::size_t which : {0u, 1u}) {
        const MergeTable &table = which == 0 ? m_tables->ours() : m_tables->theirs();
        pairEqualLines(m_tables->base(), gone[which], table, come[which],
                       [&](MergePlace base, MergePlace place) { pair(which, base, place); });
    }
    pairEqualLines(m_tables->ours(), come[0], m_tables->theirs(), come[1],
                   [&](MergePlace ours, MergePlace theirs) {
                       m_theirsOfOurs[ours] = theirs;
                       m_oursOfTheirs[theirs] = ours;
                   });
    Places goneFromBoth;
    std::set_intersection(gone[0].begin(), gone[0].end(), gone[1].begin(), gone[1].end(),
                          std::back_inserter(goneFromBoth));
    const bool haveBothCome = !come[0].empty() && !come[1].empty();
    const bool hasCome = !come[0].empty() || !come[1].empty();
    if ((hasCome && !goneFromBoth.empty()) || (haveBothCome && gone[0].empty() && gone[1].empty())) {
        const std::string_view key = (*m_tables)[side].key(example);
        return fail(error,
                    {u"MergeError"_s,
                     3,
                     {},
                     Texts::tr("Both sides changed records of the key “%1”, which several records have.")
                         .arg(shownText(QString::fromUtf8(key.data(), qsizetype(key.size())), kShownKey)),
                     {}});
    }
    for (const std::size_t which : {0u, 1u}) {
        if (gone[which].size() != come[which].size())
            continue;
        for (std::size_t i = 0; i < gone[which].size(); ++i)
            pair(which, gone[which][i], come[which][i]);
    }
    return true;
}

void MergeMatching::matchSide(std::size_t side)
{
    const MergeTable &base = m_tables->base();
    const MergeTable &table = side == 0 ? m_tables->ours() : m_tables->theirs();
    const std::vector<bool> &isRepeated = m_isRepeated[0];
    MergePlace next = 0;
    for (MergePlace place = 0; place < base.count(); ++place) {
        if (!isRepeated.empty() && isRepeated[place])
            continue;
        // Most stand in the same order.
        const bool isNext = next < table.count() && table.hasKeyOf(next, base, place);
        const MergePlace found = isNext ? next : table.find(base, place);
        if (found == kNoPlace)
            continue;
        pair(side, place, found);
        next = found + 1;
    }
}

void MergeMatching::matchAdditions()
{
    const std::vector<bool> &isRepeated = m_isRepeated[1];
    for (MergePlace place = 0; place < m_tables->ours().count(); ++place) {
        MergePlace theirs = kNoPlace;
        if (const MergePlace base = m_baseOf[0][place]; base != kNoPlace)
            theirs = m_ofBase[1][base];
        else if (isRepeated.empty() || !isRepeated[place])
            theirs = m_tables->theirs().find(m_tables->ours(), place);
        if (theirs == kNoPlace)
            continue;
        m_theirsOfOurs[place] = theirs;
        m_oursOfTheirs[theirs] = place;
    }
}

} // namespace runebook
