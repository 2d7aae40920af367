#include "codeeditor/WordCommands.h"

#include "codeeditor/VXCodeTextStorage.h"

#include <QKeyEvent>
#include <QTextBlock>
#include <QTextCursor>
#include <algorithm>

namespace runebook {

bool WordCommands::handleKey(const QKeyEvent &event)
{
    struct Move {
        QKeySequence::StandardKey key;
        Way way;
        Anchor anchor;
    };
    static constexpr Move kMoves[] = {{QKeySequence::MoveToNextWord, Way::Forward, Anchor::Moves},
                                      {QKeySequence::MoveToPreviousWord, Way::Backward, Anchor::Moves},
                                      {QKeySequence::SelectNextWord, Way::Forward, Anchor::Stays},
                                      {QKeySequence::SelectPreviousWord, Way::Backward, Anchor::Stays}};
    for (const Move &each : kMoves) {
        if (event.matches(each.key)) {
            move(each.way, each.anchor);
            return true;
        }
    }
    if (event.matches(QKeySequence::DeleteEndOfWord))
        deleteForward();
    else if (event.matches(QKeySequence::DeleteStartOfWord))
        deleteBackward();
    else
        return false;
    return true;
}

int WordCommands::nextWord(int from, Way way) const
{
    return m_code.textStorage()->nextWord(
        from, way == Way::Forward ? VXCodeTextStorage::Way::Forward : VXCodeTextStorage::Way::Backward);
}

void WordCommands::move(Way way, Anchor anchor)
{
    QTextCursor cursor = m_code.caret();
    cursor.setPosition(nextWord(cursor.position(), way),
                       anchor == Anchor::Stays ? QTextCursor::KeepAnchor : QTextCursor::MoveAnchor);
    m_code.setCaret(cursor);
    m_code.showCaret();
}

void WordCommands::deleteForward()
{
    const TextRange selection = m_code.selectedRange();
    if (selection.length > 0) {
        m_code.deleteRange(selection);
        return;
    }
    const int caret = selection.location;
    const QTextBlock block = m_code.textStorage()->findBlock(caret);
    const QString rest = block.text().sliced(caret - block.position());
    const auto spaces = std::find_if(rest.cbegin(), rest.cend(), [](QChar c) { return c != u' '; });
    const int count = int(spaces - rest.cbegin());
    const int end = count > 0 ? caret + count : nextWord(caret, Way::Forward);
    if (end > caret)
        m_code.deleteRange({caret, end - caret});
}

void WordCommands::deleteBackward()
{
    const TextRange selection = m_code.selectedRange();
    const int start = selection.length > 0 ? selection.location : nextWord(selection.location, Way::Backward);
    if (start < selection.end())
        m_code.deleteRange({start, selection.end() - start});
}

} // namespace runebook
