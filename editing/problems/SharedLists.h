#pragma once

#include "editing/compare/KeyCounts.h"
#include "platform/GapVector.h"

#include <span>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace runebook {

/// Lists of entries that each want something to be there, such as anchors their other side, and how many of
/// all records find nothing. Most records have the same few lists, so each is kept once, with how many
/// records have it.
class SharedLists
{
public:
    struct Entry {
        quint64 own = 0; ///< the key of what it is to others; 0 for nothing
        quint64 other = 0; ///< of what it wants; 0: nothing
    };
    using MakeEntry = Entry (*)(std::string_view text);

    /// What is there is in \a present; without it, what the entries themselves are.
    explicit SharedLists(MakeEntry makeEntry, const KeyCounts *present = nullptr)
        : m_makeEntry(makeEntry), m_present(present ? *present : m_sides)
    {
    }
    Q_DISABLE_COPY_MOVE(SharedLists)
    void assign(std::size_t count);
    template <typename Places> void insert(const Places &places)
    {
        m_numbers.insert(places, [](std::size_t) { return quint32(0); });
    }
    template <typename Places> void erase(const Places &places)
    {
        m_numbers.erase(places, [](auto) {});
    }
    /// Where there was none: the entries of \a text.
    void set(std::size_t place, std::string_view text);
    void drop(std::size_t place);
    /// What came to be present, or is not any more.
    void countAgain(quint64 other);

    /// How many entries of all records find nothing.
    qsizetype unmet() const { return m_unmet; }
    bool hasUnmet(std::size_t place) const { return m_lists[m_numbers[place]].unmet > 0; }
    /// Calls \a visit with the place of each in the record's list.
    template <typename Visit> void forEachUnmet(std::size_t place, Visit visit) const
    {
        const std::vector<Entry> &entries = m_lists[m_numbers[place]].entries;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (isUnmet(entries[i]))
                visit(static_cast<int>(i));
        }
    }

private:
    struct List {
        std::vector<Entry> entries;
        quint64 key = 0;
        qsizetype records = 0;
        qsizetype unmet = 0;
    };

    bool isUnmet(const Entry &entry) const { return entry.other && m_present.count(entry.other) == 0; }
    quint32 numberOf(std::string_view text);
    void addSides(quint32 number);
    void removeSides(quint32 number);
    void countUnmet(List &list) const;

    MakeEntry m_makeEntry;
    GapVector<quint32> m_numbers;
    std::vector<List> m_lists; ///< the first stays empty
    std::unordered_map<quint64, quint32> m_byText;
    std::unordered_map<quint64, std::unordered_set<quint32>> m_wanting; ///< the lists that want something
    std::vector<quint32> m_free;
    KeyCounts m_sides; ///< in how many lists each entry occurs
    const KeyCounts &m_present;
    qsizetype m_unmet = 0;
};

} // namespace runebook
