#include "document/InfoIndex.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace runebook {

namespace {

VXGlyphInfo *const kGone = reinterpret_cast<VXGlyphInfo *>(1);

bool isRecord(const VXGlyphInfo *info)
{
    return info && info != kGone;
}

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
    m_further.clear();
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
        if (isRecord(slot.info))
            insertHashed(*slot.info, slot.hash);
    }
}

InfoIndex::Slot &InfoIndex::slotOf(std::size_t hash)
{
    const std::size_t mask = m_slots.size() - 1;
    Slot *gone = nullptr;
    for (std::size_t place = hash & mask;; place = (place + 1) & mask) {
        Slot &slot = m_slots[place];
        if (!slot.info)
            return gone ? *gone : slot;
        if (slot.info == kGone)
            gone = gone ? gone : &slot;
        else if (slot.hash == hash)
            return slot;
    }
}

const InfoIndex::Slot *InfoIndex::usedSlotOf(std::size_t hash) const
{
    if (m_slots.empty())
        return nullptr;
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t place = hash & mask; m_slots[place].info; place = (place + 1) & mask) {
        if (m_slots[place].info != kGone && m_slots[place].hash == hash)
            return &m_slots[place];
    }
    return nullptr;
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
    Slot &slot = slotOf(hash);
    if (isRecord(slot.info)) {
        Others &others = m_further[hash];
        if (!others.first)
            others.first = &info;
        else
            others.more.insert(&info);
        return;
    }
    if (!slot.info)
        ++m_used;
    ++m_live;
    slot = {&info, hash};
}

void InfoIndex::remove(VXGlyphInfo &info)
{
    std::string buffer;
    remove(info, m_key(info, buffer));
}

void InfoIndex::remove(VXGlyphInfo &info, std::string_view text)
{
    const Slot *used = text.empty() ? nullptr : usedSlotOf(hashOf(text));
    if (!used)
        return;
    Slot &slot = m_slots[static_cast<std::size_t>(used - m_slots.data())];
    const auto further = m_further.find(slot.hash);
    if (further == m_further.end()) {
        if (slot.info != &info)
            return;
        slot.info = kGone;
        --m_live;
        return;
    }
    Others &others = further->second;
    if (slot.info == &info) {
        slot.info = others.first;
    } else if (others.first != &info) {
        if (const auto found = others.more.find(&info); found != others.more.end())
            others.more.erase(found);
        return;
    }
    // The first of the others has moved up or is gone.
    if (others.more.empty()) {
        m_further.erase(further);
    } else {
        others.first = *others.more.begin();
        others.more.erase(others.more.begin());
    }
}

void InfoIndex::find(std::string_view text, std::vector<VXGlyphInfo *> &found) const
{
    const Slot *slot = text.empty() ? nullptr : usedSlotOf(hashOf(text));
    if (!slot)
        return;
    std::string buffer;
    const auto add = [&](VXGlyphInfo *info) {
        if (m_key(*info, buffer) == text)
            found.push_back(info);
    };
    add(slot->info);
    if (const auto further = m_further.find(slot->hash); further != m_further.end()) {
        add(further->second.first);
        std::for_each(further->second.more.begin(), further->second.more.end(), add);
    }
}

} // namespace runebook
