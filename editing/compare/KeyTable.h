#pragma once

#include <QtGlobal>
#include <array>
#include <vector>

namespace runebook {

/// A number for each of very many keys, such as hashes of texts. In parts of their own, so that growing never
/// takes longer than a part does, and that all of it is given back in no time.
class KeyTable
{
public:
    /// The number of \a key, which is any but 0; 0 until it was set. Valid until the next call.
    quint32 &operator[](quint64 key);
    /// 0 for a key that has none.
    quint32 value(quint64 key) const;
    void clear() { m_parts = {}; }
    /// Tells the processor that \a key is about to be asked for: of very many keys the slot is far away.
    void prefetch(quint64 key) const
    {
        const std::vector<Slot> &slots = m_parts[scattered(key) % kParts].slots;
        if (!slots.empty())
            __builtin_prefetch(&slots[scattered(key) / kParts & (slots.size() - 1)]);
    }

private:
    struct Slot {
        quint64 key = 0; ///< 0: free
        quint32 value = 0;
    };
    /// Open addressing; a key whose number went back to 0 keeps its slot until the part grows.
    struct Part {
        std::vector<Slot> slots;
        std::size_t used = 0;
    };
    static constexpr std::size_t kParts = 64;

    static quint64 scattered(quint64 key)
    {
        // Code points stand close together; their products do not.
        const quint64 product = key * 0x9E3779B97F4A7C15ULL;
        return product ^ product >> 32;
    }
    static Slot &slotFor(std::vector<Slot> &slots, quint64 key);
    static void grow(Part &part);

    std::array<Part, kParts> m_parts;
};

} // namespace runebook
