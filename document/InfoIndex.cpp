#include "document/InfoIndex.h"

#include <bit>

namespace runebook {

namespace {

VXGlyphInfo *const kGone = reinterpret_cast<VXGlyphInfo *>(1);

std::size_t hashOf(std::string_view text)
{
    return std::hash<std::string_view>()(text);
}

} // namespace

void InfoIndex::build(const InfoList &infos)
{
    drop();
    grow(infos.size());
    m_isBuilt = true;
    for (const InfoPtr &info : infos)
        insert(*info);
}

void InfoIndex::drop()
{
    m_slots.clear();
    m_slots.shrink_to_fit();
    m_used = 0;
    m_live = 0;
    m_isBuilt = false;
}

void InfoIndex::grow(std::size_t records)
{
    const std::vector<Slot> old = std::exchange(m_slots, {});
    m_slots.resize(std::bit_ceil(std::max<std::size_t>(16, records * 2)));
    m_used = 0;
    m_live = 0;
    for (const Slot &slot : old) {
        if (slot.info && slot.info != kGone)
            insertHashed(*slot.info, slot.hash);
    }
}

void InfoIndex::insert(VXGlyphInfo &info)
{
    std::string buffer;
    const std::string_view text = m_key(info, buffer);
    if (text.empty())
        return;
    if ((m_used + 1) * 4 > m_slots.size() * 3)
        grow(m_live + 1); // often only clears away what was taken out
    insertHashed(info, hashOf(text));
}

void InfoIndex::insertHashed(VXGlyphInfo &info, std::size_t hash)
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t place = hash & mask;
    while (m_slots[place].info && m_slots[place].info != kGone)
        place = (place + 1) & mask;
    if (!m_slots[place].info)
        ++m_used;
    ++m_live;
    m_slots[place] = {&info, hash};
}

void InfoIndex::remove(VXGlyphInfo &info)
{
    std::string buffer;
    remove(info, m_key(info, buffer));
}

void InfoIndex::remove(VXGlyphInfo &info, std::string_view text)
{
    if (text.empty() || m_slots.empty())
        return;
    const std::size_t hash = hashOf(text);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t place = hash & mask; m_slots[place].info; place = (place + 1) & mask) {
        if (m_slots[place].info == &info && m_slots[place].hash == hash) {
            m_slots[place].info = kGone;
            --m_live;
            return;
        }
    }
}

void InfoIndex::find(std::string_view text, std::vector<VXGlyphInfo *> &found) const
{
    if (text.empty() || m_slots.empty())
        return;
    const std::size_t hash = hashOf(text);
    const std::size_t mask = m_slots.size() - 1;
    std::string buffer;
    for (std::size_t place = hash & mask; m_slots[place].info; place = (place + 1) & mask) {
        const Slot &slot = m_slots[place];
        if (slot.info != kGone && slot.hash == hash && m_key(*slot.info, buffer) == text)
            found.push_back(slot.info);
    }
}

} // namespace runebook
