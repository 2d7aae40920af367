#pragma once

#include "editing/compare/KeyTable.h"

namespace runebook {

/// Counts how often each of very many keys occurs, and how many occurrences share their key with another.
class KeyCounts
{
public:
    /// \a key is any number but 0.
    void add(quint64 key)
    {
        const quint32 count = ++m_counts[key];
        m_distinct += count == 1;
        m_repeated += count == 1 ? 0 : count == 2 ? 2 : 1;
    }
    /// Takes one occurrence back; the key must have been added.
    void remove(quint64 key)
    {
        quint32 &count = m_counts[key];
        Q_ASSERT(count > 0);
        --count;
        m_distinct -= count == 0;
        m_repeated -= count == 0 ? 0 : count == 1 ? 2 : 1;
    }
    void clear() { *this = {}; }

    void prefetch(quint64 key) const { m_counts.prefetch(key); }
    quint32 count(quint64 key) const { return m_counts.value(key); }
    qsizetype distinct() const { return m_distinct; }
    /// All occurrences of keys that occur more than once.
    qsizetype repeated() const { return m_repeated; }

private:
    KeyTable m_counts;
    qsizetype m_distinct = 0;
    qsizetype m_repeated = 0;
};

} // namespace runebook
