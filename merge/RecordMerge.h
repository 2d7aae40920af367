#pragma once

#include "merge/FieldMerge.h"
#include "merge/MergeTable.h"

#include <array>

namespace runebook {

enum class MergeSide : quint8 { Base, Ours, Theirs };

/// Why a record conflicts.
enum class ConflictKind : quint8 {
    None,
    Fields, ///< fields were changed differently
    RemovedByUs, ///< and edited by them
    RemovedByThem, ///< and edited by us
    Line, ///< both changed a line that holds more than records can
};

/// One record on the three sides.
struct MergedPlaces {
    MergePlace base = kNoPlace;
    MergePlace ours = kNoPlace;
    MergePlace theirs = kNoPlace;
};

/// What became of one record that a side changed, added or removed.
struct RecordMerge {
    enum class Result : quint8 {
        OursLine, ///< its bytes as they stand on our side
        TheirsLine,
        Nothing, ///< it is removed
        Fields, ///< put together from its fields
        Conflict,
    };

    MergedPlaces places;
    MergeState state = MergeState::Unchanged;
    ConflictKind conflict = ConflictKind::None;
    Result result = Result::OursLine;
    std::vector<FieldMerge> fields; ///< those that a side changed, where both changed the record
};

/// The three sides of a record, read from their lines; null where it is not there.
struct RecordSides {
    InfoPtr base;
    InfoPtr ours;
    InfoPtr theirs;
};

/// The tables of a merge, and the reading of single lines of them.
class MergeTables
{
public:
    MergeTables(MergeTable base, MergeTable ours, MergeTable theirs)
        : m_tables {std::move(base), std::move(ours), std::move(theirs)}
    {
    }
    const MergeTable &operator[](MergeSide side) const { return m_tables[std::size_t(side)]; }
    const MergeTable &base() const { return m_tables[0]; }
    const MergeTable &ours() const { return m_tables[1]; }
    const MergeTable &theirs() const { return m_tables[2]; }

    /// A new record of the line at \a place; null for none. \a isWhole becomes false when the line holds
    /// something that the record does not.
    InfoPtr read(MergeSide side, MergePlace place, bool *isWhole = nullptr) const;
    RecordSides read(const MergedPlaces &places, bool *areWhole = nullptr) const;
    /// A new record of the line that writers print as that line, to the last byte, as long as nobody edits
    /// it: also where the line holds more than the record.
    InfoPtr readWithLine(MergeSide side, MergePlace place) const;

private:
    std::array<MergeTable, 3> m_tables;
};

/// Merges one record: fields that one side changed are taken from it, different changes of one field and an
/// edit against a removal conflict. Two additions of one key merge with an empty base.
RecordMerge mergeRecord(const MergeTables &tables, const MergedPlaces &places);
/// Takes all that conflicts in the record from \a side, ours or theirs.
void resolveRecord(const MergeTables &tables, RecordMerge &merge, MergeSide side);
/// Gives one conflicting field its value; with the last one the record is resolved.
void resolveField(RecordMerge &merge, GlyphField field, const FieldValue &value);
/// The record that comes out, with what conflicts as \a side has it; null when it is removed there.
InfoPtr mergedRecord(const MergeTables &tables, const RecordMerge &merge, MergeSide side);

} // namespace runebook
