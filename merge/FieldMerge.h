#pragma once

#include "model/VXGlyphInfo.h"

#include <QStringList>
#include <optional>
#include <span>

namespace runebook {

/// Where what a merge gives comes from.
enum class MergeState : quint8 {
    Unchanged,
    Ours, ///< changed on our side only
    Theirs, ///< changed on their side only
    Both, ///< the same change on both sides
    Merged, ///< changes of both sides, put together
    Conflict, ///< different changes that exclude each other
};

/// One field of a record on three sides.
struct FieldMerge {
    GlyphField field;
    MergeState state;
    /// What comes out, needing no record's bytes: a text, a list or a number; for a conflict what our side
    /// has.
    FieldValue merged;
    bool isChosen = false; ///< for a conflict: somebody has said what is right
};

/// All fields that files keep, in their order there.
std::span<const GlyphField> mergedFields();

/// The three-way merge of one field; a record that is not there (null) has no values. Texts merge as a whole.
/// Lists do by entry: what one side added or took away, where neither changed the order, no entry stands
/// twice, and no entry was replaced on both sides. In code points and decompositions, where the order tells
/// something, both sides may not add at one place.
FieldMerge mergeField(GlyphField field, const VXGlyphInfo *base, const VXGlyphInfo &ours,
                      const VXGlyphInfo &theirs);
/// Whether two records have the same value, empty and absent being one; a missing record has none.
bool haveSameValue(GlyphField field, const VXGlyphInfo *one, const VXGlyphInfo *other);
/// The field of a record as a value that needs no bytes but its own.
FieldValue ownValue(GlyphField field, const VXGlyphInfo &info);
/// Stores such a value in a record, as an edit.
void setMergedValue(VXGlyphInfo &info, GlyphField field, const FieldValue &value);

enum class EntryOrder : quint8 { Free, Meant };
/// The merge of lists by their entries; nothing where they conflict.
std::optional<QStringList> mergeEntries(const QStringList &base, const QStringList &ours,
                                        const QStringList &theirs, EntryOrder order);

} // namespace runebook
