#include "codeeditor/ClosingPairs.h"

#include "codeeditor/EditGroup.h"
#include "codeeditor/PairTyping.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QTextBlock>

namespace runebook {

bool ClosingPairs::typeOver(QChar typed)
{
    const int caret = m_code.selectedRange().location;
    if (m_closers.isEmpty() || m_closers.last().selectionStart() != caret
        || m_code.textStorage()->characterAt(caret) != typed)
        return false;
    m_closers.removeLast();
    QTextCursor cursor = m_code.caret();
    cursor.movePosition(QTextCursor::NextCharacter);
    m_code.setCaret(cursor);
    m_code.showCaret();
    return true;
}

/// Whether \a place stands inside of a string or a comment, where nothing closes itself.
bool ClosingPairs::isInside(int place) const
{
    const QTextBlock block = m_code.textStorage()->findBlock(place);
    return place > block.position() && m_code.isInStringOrComment(place - 1)
        && (m_code.isInStringOrComment(place) || place + 1 >= block.position() + block.length());
}

bool ClosingPairs::type(QChar typed)
{
    const TextRange caret = m_code.selectedRange();
    if (!m_isEnabled || !m_code.mayBeEdited() || caret.length > 0)
        return false;
    forgetClosers();
    if (typeOver(typed))
        return true;
    const QTextBlock block = m_code.textStorage()->findBlock(caret.location);
    if (isInside(caret.location) || !closesItself(block.text(), caret.location - block.position(), typed)
        || !m_code.shouldChangeTextInRangeReplacementString(caret, typed))
        return false;
    QTextCursor pair = m_code.caret();
    {
        const EditGroup group(pair);
        pair.insertText(QString(typed) + closerOf(typed));
    }
    m_code.setSelectedRange({caret.location + 1, 0});
    QTextCursor closer(m_code.textStorage());
    closer.setPosition(caret.location + 2);
    closer.setPosition(caret.location + 1, QTextCursor::KeepAnchor);
    closer.setKeepPositionOnInsert(false);
    m_closers.append(closer);
    m_code.showCaret();
    return true;
}

bool ClosingPairs::deletePair()
{
    forgetClosers();
    const int caret = m_code.selectedRange().location;
    const VXCodeTextStorage *storage = m_code.textStorage();
    if (m_code.selectedRange().length > 0 || m_closers.isEmpty() || m_closers.last().selectionStart() != caret
        || caret == 0 || closerOf(storage->characterAt(caret - 1)) != storage->characterAt(caret))
        return false;
    m_closers.removeLast();
    m_code.deleteRange({caret - 1, 2});
    return true;
}

/// Closers count as long as the caret stays in front of them in their line.
void ClosingPairs::forgetClosers()
{
    const QTextCursor caret = m_code.caret();
    while (!m_closers.isEmpty()) {
        const QTextCursor &closer = m_closers.last();
        const bool isThere = closer.selectionEnd() - closer.selectionStart() == 1
            && closer.selectionStart() >= caret.position() && closer.block() == caret.block();
        if (isThere)
            return;
        m_closers.removeLast();
    }
}

} // namespace runebook
