#include "model/InfoFieldUndo.h"

#include "model/FieldRepeats.h"
#include "model/GlyphInfoOwner.h"

#include <typeinfo>

namespace runebook {

void InfoFieldUndo::registerOld(UndoManager &manager, VXGlyphInfo &info, GlyphField field)
{
    if (!manager.isRegistrationEnabled())
        return;
    // No cast at run time, which is dear where each of many records is set: nothing derives from the class.
    UndoOperation *last = manager.lastOperation();
    auto *open =
        last && typeid(*last) == typeid(InfoFieldUndo) ? static_cast<InfoFieldUndo *>(last) : nullptr;
    if (!open) {
        auto operation = std::make_unique<InfoFieldUndo>();
        open = operation.get();
        manager.registerOperation(std::move(operation));
    }
    open->m_entries.push_back({info.shared_from_this(), info.currentValue(field), field});
    // A field that is set over and over has one old value to go back to.
    dropRepeats(open->m_entries, open->m_nextCleaning);
}

void InfoFieldUndo::perform(UndoManager &manager)
{
    auto inverse = std::make_unique<InfoFieldUndo>();
    inverse->m_entries = std::move(m_entries);
    std::reverse(inverse->m_entries.begin(), inverse->m_entries.end());
    for (Entry &entry : inverse->m_entries) {
        entry.old = entry.info->exchange(entry.field, std::move(entry.old));
        entry.info->notifyChanged(entry.field, entry.old);
    }
    manager.registerOperation(std::move(inverse));
}

} // namespace runebook
