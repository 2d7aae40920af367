#pragma once

#include "model/GlyphField.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace runebook {

/// Takes out of \a entries, each of which has an "info" and a "field", all but the first for one field of one
/// record, whenever there are twice as many as the last time. So a list of changes is never more than twice
/// as long as what has changed, and each entry is looked at a few times only. \a next begins as 0.
template <typename Entry> void dropRepeats(std::vector<Entry> &entries, std::size_t &next)
{
    constexpr std::size_t kFewest = 1024;
    if (entries.size() < std::max(kFewest, next))
        return;
    constexpr std::size_t kFields = 64;
    std::unordered_set<std::size_t> seen;
    seen.reserve(entries.size());
    // Addresses use no more than 48 bits, so nothing is lost in front.
    std::erase_if(entries, [&seen](const Entry &entry) {
        const auto record = reinterpret_cast<std::size_t>(entry.info.get());
        return !seen.insert(record * kFields + static_cast<std::size_t>(entry.field)).second;
    });
    next = 2 * entries.size();
}

} // namespace runebook
