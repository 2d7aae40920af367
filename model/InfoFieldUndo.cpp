#include "model/InfoFieldUndo.h"

#include "model/GlyphInfoOwner.h"

namespace runebook {

void InfoFieldUndo::registerOld(UndoManager &manager, VXGlyphInfo &info, GlyphField field)
{
    if (!manager.isRegistrationEnabled())
        return;
    auto *open = dynamic_cast<InfoFieldUndo *>(manager.lastOperation());
    if (!open) {
        auto operation = std::make_unique<InfoFieldUndo>();
        open = operation.get();
        manager.registerOperation(std::move(operation));
    }
    open->m_entries.push_back({info.shared_from_this(), info.currentValue(field), field});
}

void InfoFieldUndo::perform(UndoManager &manager)
{
    auto inverse = std::make_unique<InfoFieldUndo>();
    inverse->m_entries = std::move(m_entries);
    std::reverse(inverse->m_entries.begin(), inverse->m_entries.end());
    for (Entry &entry : inverse->m_entries) {
        entry.old = entry.info->exchange(entry.field, std::move(entry.old));
        if (GlyphInfoOwner *document = entry.info->document())
            document->infoHasChanged(*entry.info, entry.field, entry.old);
    }
    manager.registerOperation(std::move(inverse));
}

} // namespace runebook
