#include "merge/MergeOrder.h"

#include <algorithm>

namespace runebook {

namespace {

/// The records that all three sides have, in the order of one of them.
struct CommonRecords {
    std::vector<MergePlace> places; ///< on that side
    std::vector<MergePlace> base;
};

CommonRecords commonOfOurs(const MergeTables &tables, const MergeMatching &matching)
{
    CommonRecords common;
    for (MergePlace place = 0; place < tables.ours().count(); ++place) {
        const MergedPlaces places = matching.placesOfOurs(place);
        if (places.base == kNoPlace || places.theirs == kNoPlace)
            continue;
        common.places.push_back(place);
        common.base.push_back(places.base);
    }
    return common;
}

CommonRecords commonOfTheirs(const MergeTables &tables, const MergeMatching &matching)
{
    CommonRecords common;
    for (MergePlace place = 0; place < tables.theirs().count(); ++place) {
        const MergedPlaces places = matching.placesOfTheirs(place);
        if (places.base == kNoPlace || places.ours == kNoPlace)
            continue;
        common.places.push_back(place);
        common.base.push_back(places.base);
    }
    return common;
}

/// By their places on our side, the records that only they moved.
std::vector<bool> movedByThem(const MergeTables &tables, const MergeMatching &matching)
{
    std::vector<bool> moved;
    const CommonRecords theirs = commonOfTheirs(tables, matching);
    const std::vector<bool> theirMoves = outOfOrder(theirs.base);
    if (theirMoves.empty())
        return moved;
    moved.resize(tables.ours().count());
    for (std::size_t i = 0; i < theirMoves.size(); ++i) {
        if (theirMoves[i])
            moved[matching.oursOfTheirs(theirs.places[i])] = true;
    }
    const CommonRecords ours = commonOfOurs(tables, matching);
    const std::vector<bool> ourMoves = outOfOrder(ours.base);
    for (std::size_t i = 0; i < ourMoves.size(); ++i) {
        if (ourMoves[i])
            moved[ours.places[i]] = false;
    }
    return moved;
}

} // namespace

std::vector<bool> outOfOrder(const std::vector<MergePlace> &places)
{
    if (std::is_sorted(places.begin(), places.end()))
        return {};
    // The last of the best run of each length, and what came before each in its run.
    std::vector<std::size_t> lasts;
    std::vector<std::size_t> before(places.size());
    constexpr std::size_t kNone = ~std::size_t(0);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto run =
            std::lower_bound(lasts.begin(), lasts.end(), i,
                             [&](std::size_t one, std::size_t other) { return places[one] < places[other]; });
        before[i] = run == lasts.begin() ? kNone : *std::prev(run);
        if (run == lasts.end())
            lasts.push_back(i);
        else
            *run = i;
    }
    std::vector<bool> isOut(places.size(), true);
    for (std::size_t i = lasts.back(); i != kNone; i = before[i])
        isOut[i] = false;
    return isOut;
}

std::vector<OrderedRecord> mergedOrder(const MergeTables &tables, const MergeMatching &matching)
{
    const std::vector<bool> moved = movedByThem(tables, matching);
    const MergePlace theirCount = tables.theirs().count();
    std::vector<OrderedRecord> order;
    order.reserve(tables.ours().count() + tables.ours().count() / 16);
    // Each follows the one before it there, which is in the order already, wherever that is.
    const auto addFollowing = [&](MergePlace theirs) {
        for (; theirs < theirCount; ++theirs) {
            const MergePlace ours = matching.oursOfTheirs(theirs);
            if (ours == kNoPlace)
                order.push_back({theirs, false});
            else if (!moved.empty() && moved[ours])
                order.push_back({ours, true});
            else
                return;
        }
    };
    addFollowing(0);
    for (MergePlace ours = 0; ours < tables.ours().count(); ++ours) {
        if (!moved.empty() && moved[ours])
            continue;
        order.push_back({ours, true});
        if (const MergePlace theirs = matching.placesOfOurs(ours).theirs; theirs != kNoPlace)
            addFollowing(theirs + 1);
    }
    return order;
}

} // namespace runebook
