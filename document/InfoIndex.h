#pragma once

#include "model/VXGlyphInfo.h"

#include <functional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace runebook {

/// Finds records by the text of one field without a scan: a hash table of pointers, open addressing, one slot
/// for each hash; the further records of a text stand apart, be there a million of them. It owns nothing;
/// whoever keeps the list tells it of every change.
class InfoIndex
{
public:
    /// The text by which a record is found, as UTF-8; an empty one keeps the record out.
    using Key = std::function<std::string_view(const VXGlyphInfo &info, std::string &buffer)>;
    explicit InfoIndex(Key key) : m_key(std::move(key)) { }

    bool isBuilt() const { return m_isBuilt; }
    void build(const InfoList &infos);
    void drop();
    void insert(VXGlyphInfo &info);
    /// Takes out a record that was put in under \a text.
    void remove(VXGlyphInfo &info, std::string_view text);
    /// Takes out a record under the text it has now.
    void remove(VXGlyphInfo &info);
    /// Appends every record found under \a text to \a found, in no particular order.
    void find(std::string_view text, std::vector<VXGlyphInfo *> &found) const;

private:
    struct Slot {
        VXGlyphInfo *info = nullptr; ///< null: free; kGone: was taken out
        std::size_t hash = 0;
    };

    /// The records beside the one in a slot: nearly always one, for which no set is made. A record that is
    /// listed twice stands here twice.
    struct Others {
        VXGlyphInfo *first = nullptr;
        std::unordered_multiset<VXGlyphInfo *> more;
    };

    /// The slot of that hash, or the one where it may be put.
    Slot &slotOf(std::size_t hash);
    const Slot *usedSlotOf(std::size_t hash) const;
    void insertHashed(VXGlyphInfo &info, std::size_t hash);
    void grow(std::size_t records);

    Key m_key;
    std::vector<Slot> m_slots;
    std::unordered_map<std::size_t, Others> m_further; ///< by hash
    std::size_t m_used = 0; ///< slots that are not free
    std::size_t m_live = 0; ///< slots with a record
    bool m_isBuilt = false;
};

} // namespace runebook
