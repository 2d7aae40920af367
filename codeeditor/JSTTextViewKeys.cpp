// The keys of the code view.
#include "codeeditor/JSTTextView.h"

#include "codeeditor/CompletionSession.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QKeyEvent>
#include <QTextBlock>

using namespace runebook;

bool JSTTextView::event(QEvent *event)
{
    // Escape dismisses the completions before any shortcut of the window sees it.
    if (event->type() == QEvent::ShortcutOverride && m_completions->isOpen()
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QPlainTextEdit::event(event);
}

void JSTTextView::keyPressEvent(QKeyEvent *event)
{
    if (m_completions->handleKey(*event) || handleEditingKey(event) || handleWordKey(event)) {
        event->accept();
        return;
    }
    m_userEvent = UserEvent::KeyDown;
    const bool isBackspace = event->key() == Qt::Key_Backspace && event->modifiers() == Qt::NoModifier;
    const bool isDone = isBackspace ? deletePair() || deleteIndent()
                                    : event->text().size() == 1 && typePair(event->text().front());
    if (isDone)
        event->accept();
    else
        QPlainTextEdit::keyPressEvent(event);
    m_userEvent = UserEvent::None;
    if (event->key() != Qt::Key_Shift)
        updateCompletions(event->text(), event->key() == Qt::Key_Backspace ? Typing::Erases : Typing::Adds);
}

void JSTTextView::inputMethodEvent(QInputMethodEvent *event)
{
    const QString committed = event->commitString(); // a text is typed, whatever wrote it
    m_userEvent = committed.isEmpty() ? UserEvent::None : UserEvent::KeyDown;
    QPlainTextEdit::inputMethodEvent(event);
    m_userEvent = UserEvent::None;
    updateCompletions(event->preeditString().isEmpty() ? committed : QString(), Typing::Adds);
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
        m_completions->end();
        insertNewline();
        return true;
    case Qt::Key_Space:
        if (modifiers != Qt::ControlModifier)
            return false;
        complete();
        return true;
    case Qt::Key_Tab:
        if (!plain)
            return false;
        if (!selectionSpansLines())
            return insertIndent();
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
        moveByWord(QTextCursor::NextWord, QTextCursor::MoveAnchor);
    else if (event->matches(QKeySequence::MoveToPreviousWord))
        moveByWord(QTextCursor::PreviousWord, QTextCursor::MoveAnchor);
    else if (event->matches(QKeySequence::SelectNextWord))
        moveByWord(QTextCursor::NextWord, QTextCursor::KeepAnchor);
    else if (event->matches(QKeySequence::SelectPreviousWord))
        moveByWord(QTextCursor::PreviousWord, QTextCursor::KeepAnchor);
    else if (event->matches(QKeySequence::DeleteEndOfWord))
        deleteWordForward();
    else if (event->matches(QKeySequence::DeleteStartOfWord))
        deleteWordBackward();
    else
        return false;
    m_completions->end();
    return true;
}

void JSTTextView::moveByWord(QTextCursor::MoveOperation operation, QTextCursor::MoveMode mode)
{
    QTextCursor cursor = textCursor();
    const auto way = operation == QTextCursor::NextWord ? VXCodeTextStorage::Way::Forward
                                                        : VXCodeTextStorage::Way::Backward;
    cursor.setPosition(m_storage->nextWord(cursor.position(), way), mode);
    setTextCursor(cursor);
    ensureCursorVisible();
}
