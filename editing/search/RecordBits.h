#pragma once

#include <QtGlobal>
#include <bit>
#include <cstddef>
#include <vector>

namespace runebook {

/// One bit for each of a number of records, packed so that whole sets are joined word by word.
class RecordBits
{
public: // making
    RecordBits() = default;
    /// No bit of \a count is set.
    explicit RecordBits(std::size_t count) : m_words((count + kBits - 1) / kBits), m_count(count) { }
    static RecordBits allOf(std::size_t count)
    {
        RecordBits bits;
        bits.m_words.assign((count + kBits - 1) / kBits, ~Word(0));
        bits.m_count = count;
        if (count % kBits != 0)
            bits.m_words.back() >>= kBits - count % kBits;
        return bits;
    }

public: // asking
    std::size_t size() const { return m_count; }
    bool test(std::size_t record) const { return m_words[record / kBits] >> (record % kBits) & 1; }
    bool none() const
    {
        for (const Word word : m_words) {
            if (word)
                return false;
        }
        return true;
    }
    std::size_t count() const
    {
        std::size_t count = 0;
        for (const Word word : m_words)
            count += static_cast<std::size_t>(std::popcount(word));
        return count;
    }
    /// Calls \a visit with each set record, ascending, as long as it answers true; false when it stopped.
    template <typename Visit> bool forEachWhile(Visit visit) const
    {
        for (std::size_t i = 0; i < m_words.size(); ++i) {
            for (Word word = m_words[i]; word; word &= word - 1) {
                if (!visit(i * kBits + static_cast<std::size_t>(std::countr_zero(word))))
                    return false;
            }
        }
        return true;
    }

public: // changing; both sides of a join have the same size
    void set(std::size_t record) { m_words[record / kBits] |= Word(1) << (record % kBits); }
    void assign(std::size_t record, bool on)
    {
        const Word bit = Word(1) << (record % kBits);
        m_words[record / kBits] = on ? m_words[record / kBits] | bit : m_words[record / kBits] & ~bit;
    }
    RecordBits &operator&=(const RecordBits &other)
    {
        return join(other, [](Word a, Word b) { return a & b; });
    }
    RecordBits &operator|=(const RecordBits &other)
    {
        return join(other, [](Word a, Word b) { return a | b; });
    }
    /// Takes out what is set in \a other.
    RecordBits &operator-=(const RecordBits &other)
    {
        return join(other, [](Word a, Word b) { return a & ~b; });
    }

private:
    using Word = quint64;
    static constexpr std::size_t kBits = 64;

    template <typename Operation> RecordBits &join(const RecordBits &other, Operation operation)
    {
        Q_ASSERT(m_count == other.m_count);
        for (std::size_t i = 0; i < m_words.size(); ++i)
            m_words[i] = operation(m_words[i], other.m_words[i]);
        return *this;
    }

    std::vector<Word> m_words;
    std::size_t m_count = 0;
};

} // namespace runebook
