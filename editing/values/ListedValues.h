#pragma once

#include "editing/values/ValueCounts.h"

#include <QDeadlineTimer>

namespace runebook {

/// How values are listed.
struct ValueOrder {
    enum class By { Text, Count };

    By by = By::Count;
    Qt::SortOrder direction = Qt::DescendingOrder;
    QString searched; ///< a part of the texts, in either case; empty: all
    friend bool operator==(const ValueOrder &, const ValueOrder &) = default;
};

/// The values that shown records have, in order, found a few milliseconds at a time: of very many the first
/// ones, and it is told how many there are.
class ListedValues
{
    Q_DECLARE_TR_FUNCTIONS(ListedValues)
public:
    using Value = ValueCounts::Value;
    static constexpr std::size_t kMost = 10'000;

    explicit ListedValues(std::size_t most = kMost) : m_most(most) { }

    /// What stands for no value, and for those that are too long for a list; else the text itself.
    static QString titleOf(const ValueCounts &counts, Value value);

    /// Begins anew; \a always are listed even if no shown record has them.
    void start(const ValueOrder &order, const std::vector<Value> &always);
    /// Goes on until \a deadline, at least a step; true when values() are there.
    bool runUntil(const ValueCounts &counts, const QDeadlineTimer &deadline);
    /// Once runUntil() has answered true.
    const std::vector<Value> &values() const { return m_values; }
    /// How many there would be without a limit.
    qsizetype found() const { return m_found; }

private:
    bool isListed(const ValueCounts &counts, Value value) const;
    bool isBefore(const ValueCounts &counts, Value a, Value b) const;

    std::size_t m_most;
    ValueOrder m_order;
    std::vector<Value> m_always; ///< ascending
    Value m_next = 0;
    qsizetype m_found = 0;
    std::vector<Value> m_values; ///< the last one in order first, until all were looked at
};

} // namespace runebook
