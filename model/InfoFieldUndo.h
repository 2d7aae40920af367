#pragma once

#include "model/VXGlyphInfo.h"
#include "platform/UndoManager.h"

namespace runebook {

/// The old values of changed fields of one undo step, in the order of the changes. Undoing swaps them with
/// what the records hold, so a step over 100,000 records costs their old values and nothing more.
class InfoFieldUndo final : public UndoOperation
{
public:
    /// Registers the value that \a field of \a info has now, extending the open step where it can.
    static void registerOld(UndoManager &manager, VXGlyphInfo &info, GlyphField field);
    void perform(UndoManager &manager) override;

private:
    struct Entry {
        InfoPtr info;
        FieldValue old;
        GlyphField field;
    };
    std::vector<Entry> m_entries;
    std::size_t m_nextCleaning = 0; ///< entries at which repeats are looked for
};

} // namespace runebook
