#include "editing/compare/KeyTable.h"

#include <utility>

namespace runebook {

KeyTable::Slot &KeyTable::slotFor(std::vector<Slot> &slots, quint64 key)
{
    const std::size_t mask = slots.size() - 1;
    std::size_t i = scattered(key) / kParts & mask;
    while (slots[i].key != key && slots[i].key != 0)
        i = (i + 1) & mask;
    return slots[i];
}

void KeyTable::grow(Part &part)
{
    std::size_t live = 0;
    for (const Slot &slot : part.slots)
        live += slot.value > 0;
    std::size_t size = 16;
    while (size < 2 * live + 2)
        size *= 2;
    const std::vector<Slot> old = std::exchange(part.slots, std::vector<Slot>(size));
    for (const Slot &slot : old) {
        if (slot.value > 0)
            slotFor(part.slots, slot.key) = slot;
    }
    part.used = live;
}

quint32 &KeyTable::operator[](quint64 key)
{
    Q_ASSERT(key != 0);
    const std::size_t number = scattered(key) % kParts;
    Part &part = m_parts[number];
    // From half to three quarters full: they fill alike, and are not to grow all at the same time.
    if ((part.used + 1) * 4 * kParts > part.slots.size() * (2 * kParts + number))
        grow(part);
    Slot &slot = slotFor(part.slots, key);
    if (slot.key == 0) {
        slot.key = key;
        ++part.used;
    }
    return slot.value;
}

quint32 KeyTable::value(quint64 key) const
{
    const std::vector<Slot> &slots = m_parts[scattered(key) % kParts].slots;
    if (slots.empty())
        return 0;
    const std::size_t mask = slots.size() - 1;
    std::size_t i = scattered(key) / kParts & mask;
    while (slots[i].key != key && slots[i].key != 0)
        i = (i + 1) & mask;
    return slots[i].value;
}

} // namespace runebook
