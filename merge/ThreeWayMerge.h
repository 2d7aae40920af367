#pragma once

#include "merge/MergeOrder.h"

#include <memory>

namespace runebook {

class MergeProgress;

/// What a merge is asked for.
struct MergeOptions {
    CompareKey key = CompareKey::Name;
    std::optional<MergeSide> prefer; ///< the side that is right where both are in conflict
    int markerSize = 7;
    std::array<QString, 3> labels; ///< behind the markers of conflicts: base, ours, theirs
    MergeProgress *progress = nullptr; ///< hears of the making, and may end it
};

/// One record in the order of the result.
struct MergeItem {
    OrderedRecord record;
    quint32 merge; ///< its number among the records that a side changed; kNoPlace when none did
};

/// The merge of three glyph data files, record by record and field by field. Knows what became of every
/// record and lets conflicts be resolved; MergedText writes the result. Any thread, one at a time.
class ThreeWayMerge
{
public: // making
    /// Nothing and an error (domain "MergeError") when the files cannot be merged by records.
    static std::optional<ThreeWayMerge> of(const QByteArray &base, const QByteArray &ours,
                                           const QByteArray &theirs, const MergeOptions &options,
                                           Error *error = nullptr);
    ThreeWayMerge(ThreeWayMerge &&) = default;
    ThreeWayMerge &operator=(ThreeWayMerge &&) = default;

public: // asking
    /// The records that a side changed, added or removed, in the order of the result.
    const std::vector<RecordMerge> &records() const { return m_records; }
    /// The key of one of them, as the side has it that has the record.
    QString keyOf(const RecordMerge &record) const;
    /// The three sides of one of them, for showing; null where the record is missing.
    RecordSides sidesOf(const RecordMerge &record) const { return m_tables->read(record.places); }
    /// What comes out of it, with conflicting fields as our side has them; null when nothing does.
    InfoPtr resultOf(const RecordMerge &record) const;
    /// How many of the records have that state.
    qsizetype count(MergeState state) const;
    /// How many conflicts are not resolved, that of the header included.
    qsizetype openConflicts() const;
    bool isHeaderInConflict() const { return m_isHeaderInConflict; }
    const MergeTables &tables() const { return *m_tables; }
    const MergeOptions &options() const { return m_options; }
    /// The version of the result.
    quint8 fileVersion() const { return m_version; }

public: // resolving
    /// Takes all that conflicts in a record from one side, ours or theirs.
    void resolve(std::size_t record, MergeSide side);
    /// Gives one conflicting field its value; the record is resolved with its last one.
    void resolve(std::size_t record, GlyphField field, const FieldValue &value);

public: // for who writes it
    const std::vector<MergeItem> &items() const { return m_items; }
    MergedPlaces placesOf(const MergeItem &item) const
    {
        return item.record.isOurs ? m_matching->placesOfOurs(item.record.place)
                                  : m_matching->placesOfTheirs(item.record.place);
    }
    /// What stands before the records, unless that is in conflict.
    std::string_view header() const { return m_header; }

private:
    ThreeWayMerge() = default;
    bool mergeRecords();
    void mergeHeader();
    std::vector<quint8> plainRecords() const;

    // Kept apart so that references to the tables stay true when this is moved.
    std::unique_ptr<MergeTables> m_tables;
    std::optional<MergeMatching> m_matching;
    MergeOptions m_options;
    std::vector<MergeItem> m_items;
    std::vector<RecordMerge> m_records;
    std::string_view m_header;
    bool m_isHeaderInConflict = false;
    quint8 m_version = 2;
};

} // namespace runebook
