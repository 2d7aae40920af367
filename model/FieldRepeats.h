#pragma once

#include "model/GlyphField.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

namespace runebook {

/// The value under which a field of a record is known among changes; never 0.
template <typename Entry> std::size_t repeatKey(const Entry &entry)
{
    // Addresses use no more than 48 bits, so nothing is lost in front.
    constexpr std::size_t kFields = 64;
    return reinterpret_cast<std::size_t>(entry.info.get()) * kFields + static_cast<std::size_t>(entry.field);
}

/// Whether at least half of \a entries are no repeats, as their order tells: who goes through a list meets
/// the records about as they were made, and a key above all before it is new. Much quicker than looking for
/// each.
template <typename Entry> bool isHalfNew(const std::vector<Entry> &entries)
{
    std::size_t fresh = 0, highest = 0;
    for (const Entry &entry : entries) {
        const std::size_t key = repeatKey(entry);
        fresh += key > highest;
        highest = std::max(highest, key);
    }
    return fresh >= entries.size() / 2;
}

/// Takes out of \a entries, each of which has an "info" and a "field", all but the first for one field of one
/// record, whenever there are twice as many as the last time. So a list of changes is never more than a few
/// times as long as what has changed, and each entry is looked at a few times only. \a next begins as 0.
template <typename Entry> void dropRepeats(std::vector<Entry> &entries, std::size_t &next)
{
    constexpr std::size_t kFewest = 1024;
    if (entries.size() < std::max(kFewest, next))
        return;
    next = 2 * entries.size();
    if (isHalfNew(entries))
        return;
    constexpr std::size_t kSpread = 0x9E3779B97F4A7C15; // 2^64 over the golden ratio
    // A table of its own, as this is a good part of what setting a field costs: the places that follow a
    // key's own take what does not find room there.
    std::vector<std::size_t> seen(std::bit_ceil(2 * entries.size()));
    const int shift = std::countl_zero(seen.size()) + 1;
    std::erase_if(entries, [&seen, shift](const Entry &entry) {
        const std::size_t key = repeatKey(entry);
        std::size_t place = key * kSpread >> shift;
        while (seen[place] != 0 && seen[place] != key)
            place = (place + 1) % seen.size();
        return std::exchange(seen[place], key) == key;
    });
    next = 2 * entries.size();
}

} // namespace runebook
