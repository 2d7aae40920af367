#pragma once

#include <QList>
#include <limits>

class QTextDocument;

namespace runebook {

/// Where the lines of a text document start: entry k is the index, in UTF-16 units, of the first character
/// of line k + 1. A line ends with its block or with a line separator (U+2028) inside one. Edits only mark
/// what is stale; the recount happens when somebody looks, from the first stale line on, and stops where the
/// old table is known to go on.
class LineTable
{
public:
    /// Marks everything from \a index to the end of the text as stale.
    void invalidateFrom(int index);
    /// Takes an edit as a document announces it: some characters at \a from became \a added new ones, and
    /// the text is now \a textLength long.
    void noteEdit(int from, int added, int textLength);

    bool isStale() const { return m_staleFrom != kValid; }
    /// The smallest index whose line may be stale; the largest number when none is.
    int staleFrom() const { return m_staleFrom; }

    /// Brings the table up to date with \a document.
    void recount(const QTextDocument &document);
    /// The table as it was at the last recount; empty before the first.
    const QList<int> &starts() const { return m_starts; }

    /// The 0-based line that contains \a index, by binary search; 0 in a table of fewer than two lines.
    static int lineContaining(const QList<int> &starts, int index);

private:
    static constexpr int kValid = std::numeric_limits<int>::max();

    QList<int>::iterator oldStartsFrom(int position, int textLength);
    void splice(int line, const QList<int> &fresh, QList<int>::iterator old, int shift);

    QList<int> m_starts;
    int m_staleFrom = kValid;
    int m_goodTail = kValid; // so many characters at the end of the text are as they were at the last recount
    int m_countedLength = 0; // the text's length at the last recount
};

} // namespace runebook
