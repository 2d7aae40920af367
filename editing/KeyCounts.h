#pragma once

#include <QtGlobal>
#include <array>
#include <vector>

namespace runebook {

/// Counts how often each of very many keys occurs, and how many occurrences share their key with another.
/// In parts of their own, so that growing never takes longer than a part does.
class KeyCounts
{
public:
    /// \a key is any number but 0.
    void add(quint64 key);
    /// Takes one occurrence back; the key must have been added.
    void remove(quint64 key);
    void clear();

    quint32 count(quint64 key) const;
    /// All occurrences of keys that occur more than once.
    qsizetype repeated() const { return m_repeated; }

private:
    struct Slot {
        quint64 key = 0; ///< 0: free
        quint32 count = 0;
    };
    /// Open addressing; a key that was taken out keeps its slot until the part grows.
    struct Part {
        std::vector<Slot> slots;
        std::size_t used = 0;
    };
    static constexpr std::size_t kParts = 64;

    static quint64 scattered(quint64 key);
    static Slot &slotFor(std::vector<Slot> &slots, quint64 key);
    static void grow(Part &part);

    std::array<Part, kParts> m_parts;
    qsizetype m_repeated = 0;
};

} // namespace runebook
