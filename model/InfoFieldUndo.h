#pragma once

#include "model/FieldRepeats.h"
#include "platform/UndoManager.h"

#include <algorithm>
#include <memory>
#include <typeinfo>
#include <vector>

namespace runebook {

/// The old values of changed fields of one undo step, in the order of the changes. Undoing swaps them with
/// what the records hold, so a step over 100,000 records costs their old values and nothing more. Of a record
/// it needs to know currentValue(), exchange() and notifyChanged(), and listings().
template <typename Record, typename Field, typename Value> class InfoFieldUndo final : public UndoOperation
{
public:
    /// Registers the value that \a field of \a info has now, extending the open step where it can.
    static void registerOld(UndoManager &manager, Record &info, Field field)
    {
        if (!manager.isRegistrationEnabled())
            return;
        InfoFieldUndo *open = openStep(manager);
        open->m_entries.push_back({info.shared_from_this(), info.currentValue(field), field});
        // A field that is set over and over has one old value to go back to.
        dropRepeats(open->m_entries, open->m_nextCleaning);
    }

    void perform(UndoManager &manager) override
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

    /// Calls \a visit with the record, the field and the old value of each change, in their order.
    template <typename Visit> void forEach(Visit visit) const
    {
        for (const Entry &entry : m_entries)
            visit(entry.info, entry.field, entry.old);
    }

    bool appendTouched(std::vector<UndoTouch> &touched) const override
    {
        for (const Entry &entry : m_entries)
            touched.push_back({entry.info.get(), static_cast<int>(entry.field)});
        return true;
    }

    std::unique_ptr<UndoOperation> duplicate() const override
    {
        // Taking back what nobody sees would be a step that does nothing.
        const auto isListed = [](const Entry &entry) { return entry.info->listings() > 0; };
        if (!std::all_of(m_entries.begin(), m_entries.end(), isListed))
            return nullptr;
        auto second = std::make_unique<InfoFieldUndo>();
        second->m_entries = m_entries;
        return second;
    }

private:
    struct Entry {
        std::shared_ptr<Record> info;
        Value old;
        Field field;
    };

    static InfoFieldUndo *openStep(UndoManager &manager)
    {
        // No cast at run time, which is dear where each of many records is set: nothing derives from the
        // class.
        UndoOperation *last = manager.lastOperation();
        if (last && typeid(*last) == typeid(InfoFieldUndo))
            return static_cast<InfoFieldUndo *>(last);
        auto operation = std::make_unique<InfoFieldUndo>();
        InfoFieldUndo *open = operation.get();
        manager.registerOperation(std::move(operation));
        return open;
    }

    std::vector<Entry> m_entries;
    std::size_t m_nextCleaning = 0; ///< entries at which repeats are looked for
};

} // namespace runebook
