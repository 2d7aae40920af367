#include "editing/window/FocusedText.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <array>

namespace runebook {

namespace {

/// The text that a widget with the focus edits; null when it edits none.
QWidget *textOf(QWidget *widget)
{
    if (const auto *box = qobject_cast<QComboBox *>(widget))
        return box->lineEdit();
    const bool isText = qobject_cast<QLineEdit *>(widget) || qobject_cast<QPlainTextEdit *>(widget);
    return isText ? widget : nullptr;
}

/// What \a ofLine or \a ofBox says of a text of either kind; false without a text.
template <typename OfLine, typename OfBox> bool ask(QWidget *text, OfLine ofLine, OfBox ofBox)
{
    if (const auto *line = qobject_cast<QLineEdit *>(text))
        return ofLine(*line);
    if (const auto *box = qobject_cast<QPlainTextEdit *>(text))
        return ofBox(*box);
    return false;
}

bool isReadOnly(QWidget *text)
{
    return ask(text, std::mem_fn(&QLineEdit::isReadOnly), std::mem_fn(&QPlainTextEdit::isReadOnly));
}

bool isEditKey(QKeyEvent &event)
{
    constexpr std::array kKeys {QKeySequence::Undo, QKeySequence::Redo,  QKeySequence::Cut,
                                QKeySequence::Copy, QKeySequence::Paste, QKeySequence::SelectAll};
    return std::any_of(kKeys.begin(), kKeys.end(),
                       [&event](QKeySequence::StandardKey key) { return event.matches(key); });
}

} // namespace

FocusedText::FocusedText(QWidget &window) : m_window(window)
{
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget *, QWidget *now) { focusHasChanged(now); });
    connect(QApplication::clipboard(), &QClipboard::dataChanged, this, &FocusedText::changed);
    focusHasChanged(window.focusWidget());
}

void FocusedText::focusHasChanged(QWidget *now)
{
    // A menu gives it back.
    if (!now || !m_window.isAncestorOf(now) || qobject_cast<QMenuBar *>(now) || qobject_cast<QMenu *>(now))
        return;
    if (m_widget)
        m_widget->removeEventFilter(this);
    for (const QMetaObject::Connection &connection : m_connections)
        disconnect(connection);
    m_connections.clear();
    m_widget = now;
    if (QWidget *edited = text()) {
        m_widget->installEventFilter(this);
        if (auto *line = qobject_cast<QLineEdit *>(edited))
            m_connections = {connect(line, &QLineEdit::textChanged, this, &FocusedText::changed),
                             connect(line, &QLineEdit::selectionChanged, this, &FocusedText::changed)};
        else if (auto *box = qobject_cast<QPlainTextEdit *>(edited))
            m_connections = {connect(box, &QPlainTextEdit::textChanged, this, &FocusedText::changed),
                             connect(box, &QPlainTextEdit::selectionChanged, this, &FocusedText::changed)};
    }
    Q_EMIT changed();
}

QWidget *FocusedText::text() const
{
    return textOf(m_widget);
}

bool FocusedText::eventFilter(QObject *watched, QEvent *event)
{
    // A text would keep these keys for itself; the commands know more than it does.
    if (event->type() == QEvent::ShortcutOverride && isEditKey(*static_cast<QKeyEvent *>(event))) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

// What can be done to it

bool FocusedText::canUndo() const
{
    return ask(text(), std::mem_fn(&QLineEdit::isUndoAvailable),
               [](const QPlainTextEdit &box) { return box.document()->isUndoAvailable(); });
}

bool FocusedText::canRedo() const
{
    return ask(text(), std::mem_fn(&QLineEdit::isRedoAvailable),
               [](const QPlainTextEdit &box) { return box.document()->isRedoAvailable(); });
}

bool FocusedText::canCopy() const
{
    return ask(text(), std::mem_fn(&QLineEdit::hasSelectedText),
               [](const QPlainTextEdit &box) { return box.textCursor().hasSelection(); });
}

bool FocusedText::canCut() const
{
    return canCopy() && !isReadOnly(text());
}

bool FocusedText::canDelete() const
{
    const bool isAtEnd = ask(
        text(), [](const QLineEdit &line) { return line.cursorPosition() == line.text().size(); },
        [](const QPlainTextEdit &box) { return box.textCursor().atEnd(); });
    return !isReadOnly(text()) && (canCopy() || !isAtEnd);
}

bool FocusedText::canPaste() const
{
    const QMimeData *clipboard = QApplication::clipboard()->mimeData();
    return clipboard && clipboard->hasText() && !isReadOnly(text());
}

bool FocusedText::canSelect() const
{
    return !ask(
        text(), [](const QLineEdit &line) { return line.text().isEmpty(); },
        [](const QPlainTextEdit &box) { return box.document()->isEmpty(); });
}

// Doing it

void FocusedText::perform(const char *operation) const
{
    QWidget *edited = text();
    auto *box = qobject_cast<QPlainTextEdit *>(edited);
    if (box && qstrcmp(operation, "del") == 0)
        box->textCursor().deleteChar();
    else if (auto *line = qobject_cast<QLineEdit *>(edited); line && qstrcmp(operation, "del") == 0)
        line->del();
    else
        QMetaObject::invokeMethod(edited ? edited : m_widget.data(), operation);
}

} // namespace runebook
