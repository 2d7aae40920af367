#pragma once

#include "document/FileFormats.h"
#include "document/VXDocument.h"
#include "merge/PossibleRenames.h"
#include "merge/ThreeWayMerge.h"

#include <QObject>
#include <QPointer>
#include <map>
#include <memory>

namespace runebook {

/// A merge that can be shown, and what its result begins with.
struct PreparedMerge {
    std::optional<ThreeWayMerge> merge; ///< with its conflicts; nothing when there is an error
    FileContent content; ///< with our side of each conflict
    std::vector<PossibleRename> renames;
    Error error;

    /// Merges base, ours and theirs. Any thread.
    static PreparedMerge of(const std::array<QByteArray, 3> &sides, CompareKey key,
                            MergeProgress *progress = nullptr);
};

/// Says how many conflicts of \a document are open from now on, as a part of the undo step that is open.
void changeOpenConflicts(VXDocument &document, qsizetype count);

/// What somebody decides about the conflicts of a merge. The result is a document that begins with our side
/// of every conflict; each decision is an undo step of it, and with the step goes what counts as resolved.
/// The document knows how many conflicts are open.
class MergeResolution : public QObject
{
    Q_OBJECT
public:
    /// Null when the records of \a document are not those of the merge's result.
    static std::unique_ptr<MergeResolution> of(PreparedMerge prepared, VXDocument &document);
    ~MergeResolution() override;
    /// From now on it is in force as long as the undo step is that is open in the document.
    void endWithUndo();

public: // asking; records are numbered as in ThreeWayMerge::records(), the header has the number behind them
    const ThreeWayMerge &merge() const { return m_merge; }
    /// How it was merged: after takeRename() with the record of the new name.
    const RecordMerge &record(std::size_t number) const;
    RecordSides sidesOf(std::size_t number) const;
    QString keyOf(std::size_t number) const;
    VXDocument *document() const { return m_document; }
    /// Whether the document still is the one that begins with our side of the conflicts.
    bool isInForce() const { return m_isInForce; }
    qsizetype conflictCount() const { return m_conflictCount; }
    qsizetype openCount() const { return m_openCount; }
    std::size_t headerNumber() const { return m_merge.records().size(); }
    bool isResolved(std::size_t number) const;
    /// Whether the record conflicts in that field, which can be decided by itself.
    bool isInConflict(std::size_t number, GlyphField field) const;
    bool isChosen(std::size_t number, GlyphField field) const;
    /// Whether what conflicts can only be decided as a whole: the header, and lines that hold more than the
    /// fields.
    bool isOfLines(std::size_t number) const { return record(number).conflict == ConflictKind::Line; }
    /// Those lines: base, ours, theirs.
    std::array<QString, 3> linesOf(std::size_t number) const;
    /// The record of the document; null when it is not there.
    InfoPtr resultOf(std::size_t number) const;
    /// The rename that takeRename() would take, of a record that one side has edited and the other perhaps
    /// renamed.
    const PossibleRename *renameOf(std::size_t number) const;
    bool isRenamed(std::size_t number) const { return m_states[number].isRenamed; }

public: // deciding, each as one undo step
    /// Takes all that conflicts in the record from ours or theirs.
    void take(std::size_t number, MergeSide side);
    void takeField(std::size_t number, GlyphField field, MergeSide side);
    /// Takes a value that somebody has typed; false, and an error, when the field refuses it.
    bool takeText(std::size_t number, GlyphField field, const QString &text, Error *error = nullptr);
    /// Takes removal and addition for the rename of one record, which gets the edits of both sides. Fields
    /// that both have edited are in conflict from then on.
    void takeRename(std::size_t number);
    /// The same for every conflict that is open; fields that are decided already stay.
    void takeAll(MergeSide side);

Q_SIGNALS:
    /// Something is resolved now, or open again.
    void changed();

private:
    using FieldBits = quint32;
    struct State {
        FieldBits chosen = 0;
        bool isTaken = false; ///< as a whole
        bool isRenamed = false;
    };

    MergeResolution(PreparedMerge prepared, VXDocument &document);
    static FieldBits bitOf(GlyphField field) { return FieldBits(1) << unsigned(field); }
    bool findRecords();
    void findRenames(const std::vector<PossibleRename> &renames);
    static FieldBits conflictingFields(const RecordMerge &record);
    FieldBits fieldsOf(std::size_t number) const;
    std::size_t itemOf(std::size_t number) const;
    QString nameOf(std::size_t number) const;
    void takeRecord(std::size_t number, MergeSide side, FieldBits fields);
    void takeLine(std::size_t number, MergeSide side);
    void putRecord(std::size_t item);
    void setInfo(std::size_t item, const InfoPtr &info);
    static void takeValue(VXGlyphInfo &info, GlyphField field, const VXGlyphInfo &source);
    qsizetype placeFor(std::size_t item) const;
    void setState(std::size_t number, State state);
    void applyState(std::size_t number, State state);

    /// A rename as it was merged, as one record.
    struct Rename {
        PossibleRename rename;
        RecordMerge record;
    };

    ThreeWayMerge m_merge;
    RecordMerge m_header; ///< as if it were a record of which nothing is known but its line
    QPointer<VXDocument> m_document;
    std::vector<InfoPtr> m_infos; ///< by item
    std::vector<quint32> m_items; ///< by record
    std::vector<State> m_states; ///< by record, and the header's
    std::map<std::size_t, Rename> m_renames; ///< by the record of the old name
    qsizetype m_conflictCount = 0;
    qsizetype m_openCount = 0;
    bool m_isInForce = true;
};

} // namespace runebook
