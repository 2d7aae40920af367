#include "editing/values/ListedValues.h"

#include <algorithm>

namespace runebook {

namespace {

/// Without regard to the case of ASCII letters; what is equal then, by its bytes.
bool isTextBefore(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; };
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end(),
                                             [lower](char x, char y) { return lower(x) == lower(y); });
    if (left == a.end() && right == b.end())
        return a < b;
    if (left == a.end() || right == b.end())
        return left == a.end();
    return static_cast<unsigned char>(lower(*left)) < static_cast<unsigned char>(lower(*right));
}

/// Whole numbers without a sign.
bool isNumberBefore(std::string_view a, std::string_view b)
{
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

} // namespace

QString ListedValues::titleOf(const ValueCounts &counts, Value value)
{
    return value == ValueCounts::kNone ? tr("(none)")
        : value == ValueCounts::kLong  ? tr("(very long texts)")
                                       : counts.text(value);
}

void ListedValues::start(const ValueOrder &order, const std::vector<Value> &always)
{
    m_order = order;
    m_always = always;
    std::sort(m_always.begin(), m_always.end());
    m_next = 0;
    m_found = 0;
    m_values.clear();
}

bool ListedValues::runUntil(const ValueCounts &counts, const QDeadlineTimer &deadline)
{
    constexpr Value kStep = 1024;
    const auto before = [&](Value a, Value b) { return isBefore(counts, a, b); };
    do {
        const Value end = std::min(m_next + kStep, counts.valueCount());
        for (; m_next < end; ++m_next) {
            if (!isListed(counts, m_next))
                continue;
            ++m_found;
            if (m_values.size() == m_most && !before(m_next, m_values.front()))
                continue;
            if (m_values.size() == m_most) {
                std::pop_heap(m_values.begin(), m_values.end(), before);
                m_values.pop_back();
            }
            m_values.push_back(m_next);
            std::push_heap(m_values.begin(), m_values.end(), before);
        }
    } while (m_next < counts.valueCount() && !deadline.hasExpired());
    if (m_next < counts.valueCount())
        return false;
    std::sort(m_values.begin(), m_values.end(), before);
    return true;
}

bool ListedValues::isListed(const ValueCounts &counts, Value value) const
{
    if (std::binary_search(m_always.begin(), m_always.end(), value))
        return true;
    return counts.shown(value) > 0
        && (m_order.searched.isEmpty()
            || titleOf(counts, value).contains(m_order.searched, Qt::CaseInsensitive));
}

bool ListedValues::isBefore(const ValueCounts &counts, Value a, Value b) const
{
    const bool isAscending = m_order.direction == Qt::AscendingOrder;
    if (m_order.by == ValueOrder::By::Count && counts.shown(a) != counts.shown(b))
        return (counts.shown(a) < counts.shown(b)) == isAscending;
    // What is no text counts as the first; values of one count stand in the order of the alphabet.
    if (m_order.by == ValueOrder::By::Text && !isAscending)
        std::swap(a, b);
    if (a <= ValueCounts::kLong || b <= ValueCounts::kLong)
        return a < b;
    const auto isLess = counts.aspect().isNumber() ? isNumberBefore : isTextBefore;
    return isLess(counts.utf8(a), counts.utf8(b));
}

} // namespace runebook
