#pragma once

#include "merge/MergeMatching.h"

namespace runebook {

/// One record in the order of the result: a place on our side, or one on theirs of a record that we lack.
struct OrderedRecord {
    MergePlace place;
    bool isOurs;
};

/// The order of a merge: ours. What only they moved, and what they added, follows the record that it follows
/// on their side. Records that only base has are not in it.
std::vector<OrderedRecord> mergedOrder(const MergeTables &tables, const MergeMatching &matching);

/// Of \a places, all different, those that do not stand in a longest run of ascending ones: true for what has
/// to be moved to bring them in order. Empty when they are in order.
std::vector<bool> outOfOrder(const std::vector<MergePlace> &places);

} // namespace runebook
