#include "codeeditor/LineTable.h"

#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>

namespace runebook {

void LineTable::invalidateFrom(int index)
{
    m_staleFrom = std::min(m_staleFrom, index);
    m_goodTail = 0;
}

void LineTable::noteEdit(int from, int added, int textLength)
{
    m_staleFrom = std::min(m_staleFrom, from);
    m_goodTail = std::clamp(textLength - (from + added), 0, m_goodTail);
}

int LineTable::lineContaining(const QList<int> &starts, int index)
{
    if (starts.size() < 2)
        return 0;
    qsizetype low = 0;
    qsizetype high = starts.size();
    while (high - low > 1) {
        const qsizetype middle = (low + high) / 2;
        if (starts[middle] == index)
            return int(middle);
        (starts[middle] > index ? high : low) = middle;
    }
    return int(low);
}

/// The old entries that go on at \a position of the new text: there is a line in both, and nothing changed
/// from there on. The end of the table when that is not so.
QList<int>::iterator LineTable::oldStartsFrom(int position, int textLength)
{
    if (textLength - position > m_goodTail)
        return m_starts.end();
    const int oldPosition = position - textLength + m_countedLength;
    const auto old = std::lower_bound(m_starts.begin(), m_starts.end(), oldPosition);
    return old != m_starts.end() && *old == oldPosition ? old : m_starts.end();
}

void LineTable::recount(const QTextDocument &document)
{
    const int textLength = document.characterCount() - 1;
    const int line = m_starts.isEmpty() ? 0 : lineContaining(m_starts, m_staleFrom);
    int start = m_starts.isEmpty() ? 0 : m_starts[line];
    QList<int> fresh {start};
    auto old = m_starts.end();
    const auto meetsOldStarts = [&](int position) {
        old = oldStartsFrom(position, textLength);
        return old != m_starts.end();
    };

    QTextBlock block = document.findBlock(start);
    int blockStart = block.position();
    while (block.isValid()) {
        const QString text = block.text();
        qsizetype separator = text.indexOf(QChar::LineSeparator, start - blockStart);
        for (; separator >= 0; separator = text.indexOf(QChar::LineSeparator, start - blockStart)) {
            start = blockStart + int(separator) + 1;
            if (meetsOldStarts(start))
                break;
            fresh.append(start);
        }
        blockStart += block.length();
        block = block.next();
        if (separator >= 0 || !block.isValid() || meetsOldStarts(blockStart))
            break;
        start = blockStart;
        fresh.append(start);
    }
    splice(line, fresh, old, textLength - m_countedLength);
    m_staleFrom = kValid;
    m_goodTail = kValid;
    m_countedLength = textLength;
}

/// Puts \a fresh in place of the entries from \a line up to \a old, which move by \a shift.
void LineTable::splice(int line, const QList<int> &fresh, QList<int>::iterator old, int shift)
{
    if (shift != 0)
        std::for_each(old, m_starts.end(), [shift](int &start) { start += shift; });
    const auto first = m_starts.begin() + line;
    const qsizetype replaced = old - first;
    const qsizetype common = std::min(replaced, fresh.size());
    std::copy_n(fresh.begin(), common, first);
    if (replaced > common)
        m_starts.remove(line + common, replaced - common);
    else if (fresh.size() > common) {
        m_starts.insert(line + common, fresh.size() - common, 0);
        std::copy(fresh.begin() + common, fresh.end(), m_starts.begin() + line + common);
    }
}

} // namespace runebook
