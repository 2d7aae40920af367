// The keys of the code view, and the completions that appear while typing.
#include "JSTTextView.h"

#include "codeeditor/CharacterClasses.h"
#include "codeeditor/CompletionPopup.h"
#include "codeeditor/JSTDocument.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QKeyEvent>
#include <QTextBlock>

using namespace runebook;

namespace {

/// So many characters of a name make the list of completions appear by itself.
constexpr int charactersUntilCompletion = 2;

} // namespace

bool JSTTextView::event(QEvent *event)
{
    // Escape dismisses the completions before any shortcut of the window sees it.
    if (event->type() == QEvent::ShortcutOverride && m_completionPopup->isVisible()
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QPlainTextEdit::event(event);
}

void JSTTextView::keyPressEvent(QKeyEvent *event)
{
    if (m_completionPopup->handleKey(*event) || handleEditingKey(event) || handleWordKey(event)) {
        event->accept();
        return;
    }
    m_userEvent = UserEvent::KeyDown;
    QPlainTextEdit::keyPressEvent(event);
    m_userEvent = UserEvent::None;
    updateCompletions(*event);
}

bool JSTTextView::handleEditingKey(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool plain = modifiers == Qt::NoModifier;
    const bool shifted = modifiers == Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!plain && !shifted) // with Shift too: a line separator is nothing Python knows
            return false;
        m_completionPopup->hide();
        insertNewline();
        return true;
    case Qt::Key_Space:
        if (modifiers != Qt::ControlModifier)
            return false;
        complete();
        return true;
    case Qt::Key_Tab:
        if (!plain || !selectionSpansLines())
            return false;
        shiftSelectedLinesRight();
        return true;
    case Qt::Key_Backtab:
        shiftSelectedLinesLeft();
        return true;
    default:
        return false;
    }
}

bool JSTTextView::handleWordKey(QKeyEvent *event)
{
    if (event->matches(QKeySequence::MoveToNextWord))
        moveByWord(true, QTextCursor::MoveAnchor);
    else if (event->matches(QKeySequence::MoveToPreviousWord))
        moveByWord(false, QTextCursor::MoveAnchor);
    else if (event->matches(QKeySequence::SelectNextWord))
        moveByWord(true, QTextCursor::KeepAnchor);
    else if (event->matches(QKeySequence::SelectPreviousWord))
        moveByWord(false, QTextCursor::KeepAnchor);
    else if (event->matches(QKeySequence::DeleteEndOfWord))
        deleteWordForward();
    else if (event->matches(QKeySequence::DeleteStartOfWord))
        deleteWordBackward();
    else
        return false;
    m_completionPopup->hide();
    return true;
}

void JSTTextView::moveByWord(bool forward, QTextCursor::MoveMode mode)
{
    QTextCursor cursor = textCursor();
    cursor.setPosition(m_storage->nextWordFromIndexForward(cursor.position(), forward), mode);
    setTextCursor(cursor);
    ensureCursorVisible();
}

// ---- completion

TextRange JSTTextView::rangeForUserCompletion() const
{
    const int caret = textCursor().position();
    const QTextBlock block = m_storage->findBlock(caret);
    const QString text = block.text();
    int start = caret - block.position();
    const int end = start;
    while (start > 0) {
        const bool pair = start > 1 && text[start - 1].isLowSurrogate() && text[start - 2].isHighSurrogate();
        const int length = pair ? 2 : 1;
        if (text[start - 1] != u'.' && namePartLength(text, start - length) == 0)
            break;
        start -= length;
    }
    if (start < end && text[start].isDigit())
        return {caret, 0}; // a number
    return {block.position() + start, end - start};
}

QStringList JSTTextView::completionsForPartialWordRange(TextRange range, int *selectedIndex)
{
    JSTTextViewDelegate *delegate = qobject_cast<JSTTextViewDelegate *>(m_delegate.data());
    if (!delegate)
        return {};
    QStringList words =
        delegate->textViewCompletionsForPartialWordRangeIndexOfSelectedItem(this, {}, range, selectedIndex);
    words.removeDuplicates();
    return words;
}

void JSTTextView::complete()
{
    showCompletions(true);
}

/// After a key: a name that is being typed brings the list up, or narrows it; anything else ends it.
void JSTTextView::updateCompletions(const QKeyEvent &event)
{
    const QString typed = event.text();
    const bool erases = event.key() == Qt::Key_Backspace;
    const bool types = !typed.isEmpty() && typed.front().isPrint();
    if (m_completionPopup->isVisible() ? (types || erases) : types)
        showCompletions(false);
    else if (event.key() != Qt::Key_Shift)
        m_completionPopup->hide();
}

void JSTTextView::showCompletions(bool onRequest)
{
    const TextRange range = rangeForUserCompletion();
    const QString partial = m_storage->substringWithRange(range);
    const bool afterDot = partial.contains(u'.');
    const auto *coloured = qobject_cast<const JSTDocument *>(m_delegate.data());
    const bool unasked = !onRequest
        && ((!afterDot && partial.size() < charactersUntilCompletion)
            || (coloured && range.length > 0 && coloured->isInStringOrComment(range.end() - 1)));
    int selected = 0;
    const QStringList words =
        unasked || isReadOnly() ? QStringList() : completionsForPartialWordRange(range, &selected);
    // A name typed to its end wants no help; the next Return is meant for the text.
    if (!onRequest && words.contains(partial)) {
        m_completionPopup->hide();
        return;
    }
    m_completedRange = range;
    QTextCursor start(m_storage);
    start.setPosition(range.location);
    const QRect caret = cursorRect(start);
    m_completionPopup->popUp(words, selected, QRect(viewport()->mapToGlobal(caret.topLeft()), caret.size()));
}

void JSTTextView::acceptCompletion(const QString &word)
{
    const TextRange range = m_completedRange.clampedTo(m_storage->length());
    if (!shouldChangeTextInRangeReplacementString(range, word))
        return;
    m_storage->replaceCharactersInRangeWithString(range, word);
    setSelectedRange({range.location + int(word.size()), 0});
    ensureCursorVisible();
}
