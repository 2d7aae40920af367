#pragma once

#include "editing/merge/MergeResolution.h"

namespace runebook {

/// One field of a record that differs on the sides of a merge.
struct MergeRow {
    GlyphField field;
    MergeState state;
    bool isInConflict; ///< and can be decided by itself
    bool isChosen;
};
/// The fields that a side has changed; all that there are where the record came or went as a whole.
std::vector<MergeRow> mergeRows(const MergeResolution &resolution, std::size_t number);
/// What the sides did to a record, in a few sentences; empty where the fields tell it.
QString mergeExplanation(const MergeResolution &resolution, std::size_t number);
/// How many conflicts remain.
QString mergeStateText(const MergeResolution &resolution);

} // namespace runebook
