#include "editing/compare/NextKeys.h"

#include <QSet>
#include <algorithm>

namespace runebook {

namespace {

/// Beyond so many keys it is not looked for which ones came back.
constexpr qsizetype kManyListed = 100'000;

} // namespace

NextKeys NextKeys::behindSelection(const KeyList &list, Done done)
{
    NextKeys next;
    const IndexSet rows = list.selectionIndexes();
    if (rows.empty())
        return next;
    if (done == Done::Perhaps)
        next.m_keys = list.selectedObjects();
    next.m_row = rows.back() + 1;
    next.m_formerCount = list.rowCount();
    if (next.m_row < next.m_formerCount)
        next.m_nextKey = list.index(static_cast<int>(next.m_row)).data().toString();
    return next;
}

NextKeys NextKeys::atWhatComesBack(const KeyList &list)
{
    NextKeys next;
    next.m_isWhatComesBack = true;
    next.m_keys = list.arrangedObjects();
    return next;
}

std::optional<IndexSet> NextKeys::rowsNotListedBefore(const QStringList &keys) const
{
    if (keys.size() > kManyListed)
        return {};
    const QSet<QString> known(m_keys.begin(), m_keys.end());
    IndexSet rows;
    for (qsizetype row = 0; row < keys.size(); ++row) {
        if (!known.contains(keys.at(row)))
            rows.push_back(row);
    }
    return rows.empty() ? std::nullopt : std::optional(rows);
}

std::optional<IndexSet> NextKeys::rowsIn(const QStringList &keys) const
{
    if (m_isWhatComesBack)
        return rowsNotListedBefore(keys);
    // Of a field that was taken other ones may still differ: then the record is not done.
    const QSet<QString> undone(m_keys.begin(), m_keys.end());
    if (std::any_of(keys.begin(), keys.end(), [&undone](const QString &key) { return undone.contains(key); }))
        return {};
    if (m_nextKey.isNull())
        return IndexSet {};
    qsizetype row = m_row + keys.size() - m_formerCount;
    if (keys.value(row) != m_nextKey)
        row = keys.indexOf(m_nextKey);
    return row < 0 ? IndexSet {} : IndexSet {row};
}

} // namespace runebook
