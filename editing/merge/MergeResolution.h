#pragma once

#include "document/VXDocument.h"
#include "merge/ThreeWayMerge.h"

#include <QObject>
#include <QPointer>
#include <memory>

namespace runebook {

/// A merge that can be shown, and the text that its result begins with.
struct PreparedMerge {
    std::optional<ThreeWayMerge> merge; ///< with its conflicts; nothing when there is an error
    QByteArray text; ///< with our side of each conflict
    Error error;

    /// Merges base, ours and theirs. Any thread.
    static PreparedMerge of(const std::array<QByteArray, 3> &sides, CompareKey key);
};

/// What somebody decides about the conflicts of a merge. The result is a document that begins with our side
/// of every conflict; each decision is an undo step of it, and with the step goes what counts as resolved.
/// The document knows how many conflicts are open (OpenConflicts.h).
class MergeResolution : public QObject
{
    Q_OBJECT
public:
    /// Null when the records of \a document are not those of the merge's text.
    static std::unique_ptr<MergeResolution> of(PreparedMerge prepared, VXDocument &document);
    ~MergeResolution() override;

public: // asking; records are numbered as in ThreeWayMerge::records()
    const ThreeWayMerge &merge() const { return m_merge; }
    const RecordMerge &record(std::size_t number) const { return m_merge.records()[number]; }
    VXDocument *document() const { return m_document; }
    qsizetype conflictCount() const { return m_conflictCount; }
    qsizetype openCount() const { return m_openCount; }
    bool isResolved(std::size_t number) const;
    /// Whether the record conflicts in that field, which can be decided by itself.
    bool isInConflict(std::size_t number, GlyphField field) const;
    bool isChosen(std::size_t number, GlyphField field) const;
    /// The record of the document; null when it is not there.
    InfoPtr resultOf(std::size_t number) const;

public: // deciding, each as one undo step
    /// Takes all that conflicts in the record from ours or theirs.
    void take(std::size_t number, MergeSide side);
    void takeField(std::size_t number, GlyphField field, MergeSide side);
    /// Takes a value that somebody has typed; false, and an error, when the field refuses it.
    bool takeText(std::size_t number, GlyphField field, const QString &text, Error *error = nullptr);
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
    };

    MergeResolution(ThreeWayMerge merge, VXDocument &document);
    static FieldBits bitOf(GlyphField field) { return FieldBits(1) << unsigned(field); }
    bool findRecords();
    FieldBits conflictingFields(const RecordMerge &record) const;
    QString nameOf(std::size_t number) const;
    void takeRecord(std::size_t number, MergeSide side, FieldBits fields);
    static void takeValue(VXGlyphInfo &info, GlyphField field, const VXGlyphInfo &source);
    qsizetype placeFor(std::size_t item) const;
    void setState(std::size_t number, State state);

    ThreeWayMerge m_merge;
    QPointer<VXDocument> m_document;
    std::vector<InfoPtr> m_infos; ///< by item
    std::vector<quint32> m_items; ///< by record
    std::vector<State> m_states; ///< by record
    std::vector<FieldBits> m_fields; ///< by record: those in conflict
    qsizetype m_conflictCount = 0;
    qsizetype m_openCount = 0;
};

} // namespace runebook
