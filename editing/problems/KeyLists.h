#pragma once

#include "editing/compare/KeyCounts.h"
#include "editing/problems/RecordTexts.h"
#include "platform/GapVector.h"

#include <span>

namespace runebook {

/// The entries of one list of each record as keys of names, by the record's place, and how often each key
/// occurs in all of them. A list keeps its number until it is dropped, wherever its record moves.
class KeyLists
{
public:
    void assign(std::size_t count)
    {
        m_numbers.assign(count, 0);
        m_lists.assign(1, {});
        m_free.clear();
        m_counts.clear();
    }
    template <typename Places> void insert(const Places &places)
    {
        m_numbers.insert(places, [](std::size_t) { return quint32(0); });
    }
    template <typename Places> void erase(const Places &places)
    {
        m_numbers.erase(places, [](auto) {});
    }

    /// The number of the list at \a place; 0 for none.
    quint32 numberAt(std::size_t place) const { return m_numbers[place]; }
    std::span<const quint64> at(std::size_t place) const { return m_lists[m_numbers[place]]; }
    std::span<const quint64> list(quint32 number) const { return m_lists[number]; }
    quint32 count(quint64 key) const { return m_counts.count(key); }
    void prefetch(quint64 key) const { m_counts.prefetch(key); }

    /// Where there was none: the entries of \a text.
    void set(std::size_t place, std::string_view text)
    {
        if (text.empty())
            return;
        if (m_free.empty()) {
            m_free.push_back(static_cast<quint32>(m_lists.size()));
            m_lists.emplace_back();
        }
        m_numbers[place] = m_free.back();
        m_free.pop_back();
        std::vector<quint64> &keys = m_lists[m_numbers[place]];
        forEachEntry(text, [&](std::string_view name) {
            keys.push_back(keyOfName(name));
            if (keys.back())
                m_counts.add(keys.back());
        });
    }
    void drop(std::size_t place)
    {
        const quint32 number = std::exchange(m_numbers[place], 0);
        if (number == 0)
            return;
        for (const quint64 key : m_lists[number]) {
            if (key)
                m_counts.remove(key);
        }
        m_lists[number].clear();
        m_free.push_back(number);
    }

private:
    GapVector<quint32> m_numbers;
    std::vector<std::vector<quint64>> m_lists; ///< the first stays empty
    std::vector<quint32> m_free;
    KeyCounts m_counts;
};

} // namespace runebook
