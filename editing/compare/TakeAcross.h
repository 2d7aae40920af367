#pragma once

#include "document/VXDocument.h"
#include "editing/compare/CompareOptions.h"
#include "model/CompareKey.h"
#include "model/EditedValue.h"

#include <vector>

namespace runebook {

/// Makes records of one document like their counterparts in another one, which are those with the same key.
/// Fields are set in place; whatever is done is one undo step of the document that changes.
class TakeAcross
{
public:
    /// What became of it.
    struct Outcome {
        qsizetype changed = 0; ///< records with fields set
        qsizetype inserted = 0;
        qsizetype removed = 0;
        LeftOut leftOut; ///< what no save would write

        bool hasDone() const { return changed + inserted + removed > 0; }
    };

    /// Both must stay as long as this.
    TakeAcross(const VXDocument &source, VXDocument &target, CompareKey key,
               const CompareOptions &options = {});

    /// Takes every field that differs of \a theirs, records of the source, into their counterparts among \a
    /// ours, records of the target. Of several with the same key those that agree find each other first, the
    /// others pair up in order. What has no counterpart is inserted behind the neighbour that it follows in
    /// the source.
    Outcome takeRecords(const InfoList &theirs, const InfoList &ours);
    /// Takes one field, and inserts nothing.
    Outcome takeField(GlyphField field, const InfoList &theirs, const InfoList &ours);
    /// Removes those of \a ours that have no counterpart in \a theirs.
    Outcome removeMissing(const InfoList &theirs, const InfoList &ours);

private:
    struct Addition {
        qsizetype behind; ///< place in the target; -1 for the beginning
        InfoPtr record;
    };

    bool setField(VXGlyphInfo &target, const VXGlyphInfo &source, GlyphField field, Outcome &outcome) const;
    void insert(const InfoList &records, Outcome &outcome);
    qsizetype placeOfCounterpart(const VXGlyphInfo &info) const;

    const VXDocument &m_source;
    VXDocument &m_target;
    CompareKey m_key;
    CompareOptions m_options; ///< what is overlooked is left as it is
};

/// The records whose key is one of \a keys, in the order of the list. Linear in both.
InfoList recordsWithKeys(const InfoList &infos, CompareKey key, const QStringList &keys);

} // namespace runebook
