#pragma once

#include <QString>
#include <QTextBlock>
#include <QTextCursor>

namespace runebook {

/// The lines of a console in the blocks of its document. Long ones are cut into several blocks, since the
/// layout of one line of a megabyte takes seconds, and folded: blocks behind the first one are not shown
/// until somebody asks. How each block ends is remembered, so that the text comes out as it was written. An
/// index counts UTF-16 units of that text, a position those of the document.
class ConsoleLines
{
public:
    enum class End { LineFeed = -1, Cut = 0, ReturnLineFeed, ParagraphSeparator };

    explicit ConsoleLines(QTextDocument *document) : m_document(document) { }

    /// Ends the last block at \a cursor in another way than by a plain line feed.
    void endBlock(QTextCursor &cursor, End end);
    /// Empties the line at \a cursor, for what is written over it.
    static void beginAnew(QTextCursor &cursor);
    /// The document was emptied.
    void forget() { m_hasOddEnds = false; }

    /// Whether a line is cut off behind \a block.
    static bool isFolded(const QTextBlock &block);
    /// The first and the last block of the line that \a block belongs to.
    static QTextBlock start(QTextBlock block);
    static QTextBlock last(QTextBlock block);
    static bool isCut(const QTextBlock &block) { return block.userState() == static_cast<int>(End::Cut); }
    static void hide(QTextBlock block);

    /// The text between two positions as it was written.
    QString textBetween(int from, int to) const;
    int indexOfPosition(int position) const;
    /// Inside of the document.
    int positionOfIndex(int index) const;

private:
    QTextDocument *m_document;
    bool m_hasOddEnds = false; ///< some block does not end in a plain line feed
};

} // namespace runebook
