#pragma once

#include "merge/ThreeWayMerge.h"

namespace runebook {

/// A record that one side removed while it added one of the same code points under another key.
struct PossibleRename {
    std::size_t from; ///< numbers among the records of the merge
    std::size_t to;
    MergeSide side; ///< the one that may have renamed
    bool isInConflict; ///< the other side has edited the removed record
};

/// So many records are read to find renames; where a side has removed and added more than that, none are
/// told.
inline constexpr std::size_t kMostReadForRenames = 100'000;

/// The renames that the sides of a merge may have made, in the order of the old keys. Code points that
/// several of the removed or of the added records have tell nothing.
std::vector<PossibleRename> possibleRenames(const ThreeWayMerge &merge,
                                            std::size_t mostRead = kMostReadForRenames);
/// Both sides of the renamed record as of one that exists all over: under the new key on the side that
/// renamed, under the old one on the others.
MergedPlaces placesOfRename(const ThreeWayMerge &merge, const PossibleRename &rename);

} // namespace runebook
