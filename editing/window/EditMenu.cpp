#include "editing/window/EditMenu.h"

#include "editing/records/GlyphCellDelegate.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/DetailPane.h"
#include "editing/window/RecordCommands.h"
#include "editing/window/StateChange.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"

#include <QAbstractItemView>
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

} // namespace

EditMenu::EditMenu(const WindowParts &parts, RecordCommands &commands, StateChange &state, QObject *parent)
    : QObject(parent), m_parts(parts), m_recordCommands(commands), m_state(state)
{
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget *, QWidget *now) { focusHasChanged(now); });
    connect(QApplication::clipboard(), &QClipboard::dataChanged, &m_state, &StateChange::note);
    focusHasChanged(parts.window.focusWidget());
}

// Building

QAction *EditMenu::addAction(QMenu &menu, const QString &text, void (EditMenu::*command)())
{
    QAction *action = menu.addAction(text);
    connect(action, &QAction::triggered, this, command);
    return action;
}

void EditMenu::addUndoCommands(QMenu &menu)
{
    m_undoAction = addAction(menu, tr("&Undo"), &EditMenu::undo);
    m_undoAction->setShortcuts(QKeySequence::Undo);
    m_redoAction = addAction(menu, tr("&Redo"), &EditMenu::redo);
    m_redoAction->setShortcuts(QKeySequence::Redo);
}

void EditMenu::addCommand(QMenu &menu, const Command &command, void (RecordCommands::*onRecords)())
{
    m_commands.push_back(command);
    Command &added = m_commands.back();
    added.action = menu.addAction(command.recordTitle);
    connect(added.action, &QAction::triggered, this,
            [this, operation = command.textOperation, onRecords] { run(operation, onRecords); });
}

void EditMenu::addClipboardCommands(QMenu &menu)
{
    addCommand(
        menu,
        {nullptr, "cut", tr("Cu&t"), tr("Cu&t Text"), &EditMenu::canCutText, &EditMenu::hasSelectedRecords},
        &RecordCommands::cut);
    m_commands.back().action->setShortcuts(QKeySequence::Cut);
    addCommand(menu,
               {nullptr, "copy", tr("&Copy"), tr("&Copy Text"), &EditMenu::canCopyText,
                &EditMenu::hasSelectedRecords},
               &RecordCommands::copy);
    m_commands.back().action->setShortcuts(QKeySequence::Copy);
    addCommand(menu,
               {nullptr, "paste", tr("&Paste"), tr("&Paste Text"), &EditMenu::canPaste, &EditMenu::canPaste},
               &RecordCommands::paste);
    m_commands.back().action->setShortcuts(QKeySequence::Paste);
    // Its key is known to texts and to the table.
    addCommand(menu,
               {nullptr, "del", tr("&Delete"), tr("&Delete Text"), &EditMenu::canDeleteText,
                &EditMenu::hasSelectedRecords},
               &RecordCommands::deleteSelected);
}

void EditMenu::addSelectAllCommand(QMenu &menu)
{
    addCommand(menu,
               {nullptr, "selectAll", tr("Select &All"), tr("Select &All Text"), &EditMenu::canSelectText,
                &EditMenu::hasRecords},
               &RecordCommands::selectAll);
    m_commands.back().action->setShortcuts(QKeySequence::SelectAll);
}

void EditMenu::validate()
{
    if (!m_undoAction)
        return;
    UndoManager *manager = m_parts.document.undoManager();
    const QUndoStack *stack = manager->stack();
    const auto name = [](QAction *action, const QString &plain, const QString &named, const QString &step) {
        action->setText(step.isEmpty() ? plain : named.arg(menuText(step)));
    };
    const bool isTyping = holdsTyping();
    const bool redoesText = isTyping || canRedoText();
    m_undoAction->setEnabled(isTyping ? canUndoText() : manager->canUndo());
    m_redoAction->setEnabled(redoesText ? canRedoText() : manager->canRedo());
    name(m_undoAction, tr("&Undo"), tr("&Undo %1"), isTyping ? tr("Typing") : stack->undoText());
    name(m_redoAction, tr("&Redo"), tr("&Redo %1"), redoesText ? tr("Typing") : stack->redoText());

    const bool hasText = text();
    for (const Command &command : m_commands) {
        const bool isOther = !hasText && !isTableFocused() && m_focus
            && m_focus->metaObject()->indexOfMethod(QByteArray(command.textOperation) + "()") >= 0;
        command.action->setText(hasText ? command.textTitle : command.recordTitle);
        command.action->setEnabled(hasText ? (this->*command.canChangeText)()
                                           : isOther
                                           || (isTableFocused() && (this->*command.canChangeRecords)()));
    }
}

// What has the focus

void EditMenu::focusHasChanged(QWidget *now)
{
    // A menu gives it back.
    if (!now || !m_parts.window.isAncestorOf(now) || qobject_cast<QMenuBar *>(now)
        || qobject_cast<QMenu *>(now))
        return;
    if (m_focus)
        m_focus->removeEventFilter(this);
    for (const QMetaObject::Connection &connection : m_textConnections)
        disconnect(connection);
    m_textConnections.clear();
    m_focus = now;
    if (QWidget *edited = text()) {
        m_focus->installEventFilter(this);
        if (auto *line = qobject_cast<QLineEdit *>(edited))
            m_textConnections = {connect(line, &QLineEdit::textChanged, &m_state, &StateChange::note),
                                 connect(line, &QLineEdit::selectionChanged, &m_state, &StateChange::note)};
        else if (auto *box = qobject_cast<QPlainTextEdit *>(edited))
            m_textConnections = {
                connect(box, &QPlainTextEdit::textChanged, &m_state, &StateChange::note),
                connect(box, &QPlainTextEdit::selectionChanged, &m_state, &StateChange::note)};
    }
    m_state.note();
}

QWidget *EditMenu::text() const
{
    return textOf(m_focus);
}

bool EditMenu::isTableFocused() const
{
    // Nothing has it yet, or no more: the table is what the window is about.
    return !m_focus || m_focus == &m_parts.table || m_parts.table.viewport() == m_focus;
}

bool EditMenu::isEditKey(QKeyEvent &event)
{
    constexpr std::array kKeys {QKeySequence::Undo, QKeySequence::Redo,  QKeySequence::Cut,
                                QKeySequence::Copy, QKeySequence::Paste, QKeySequence::SelectAll};
    return std::any_of(kKeys.begin(), kKeys.end(),
                       [&event](QKeySequence::StandardKey key) { return event.matches(key); });
}

bool EditMenu::eventFilter(QObject *watched, QEvent *event)
{
    // A text would keep these keys for itself; the commands know more than it does.
    if (event->type() == QEvent::ShortcutOverride && isEditKey(*static_cast<QKeyEvent *>(event))) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

// What can be done to it

bool EditMenu::holdsTyping() const
{
    QWidget *edited = text();
    if (!edited)
        return false;
    if (edited == m_parts.table.cellDelegate().editor())
        return m_parts.table.cellDelegate().hasPendingText();
    if (m_parts.pane.isAncestorOf(edited))
        return m_parts.pane.hasPendingText(m_focus);
    return canUndoText();
}

bool EditMenu::canUndoText() const
{
    // What was typed can be taken back even where the text has forgotten how.
    const bool isFieldOfRecords =
        m_parts.pane.isAncestorOf(m_focus) || m_focus == m_parts.table.cellDelegate().editor();
    return isFieldOfRecords
        || ask(text(), std::mem_fn(&QLineEdit::isUndoAvailable),
               [](const QPlainTextEdit &box) { return box.document()->isUndoAvailable(); });
}

bool EditMenu::canRedoText() const
{
    return ask(text(), std::mem_fn(&QLineEdit::isRedoAvailable),
               [](const QPlainTextEdit &box) { return box.document()->isRedoAvailable(); });
}

bool EditMenu::canCopyText() const
{
    return ask(text(), std::mem_fn(&QLineEdit::hasSelectedText),
               [](const QPlainTextEdit &box) { return box.textCursor().hasSelection(); });
}

bool EditMenu::canCutText() const
{
    return canCopyText() && !isReadOnly(text());
}

bool EditMenu::canDeleteText() const
{
    const bool isAtEnd = ask(
        text(), [](const QLineEdit &line) { return line.cursorPosition() == line.text().size(); },
        [](const QPlainTextEdit &box) { return box.textCursor().atEnd(); });
    return !isReadOnly(text()) && (canCopyText() || !isAtEnd);
}

bool EditMenu::canPaste() const
{
    const QMimeData *clipboard = QApplication::clipboard()->mimeData();
    return clipboard && clipboard->hasText() && !isReadOnly(text());
}

bool EditMenu::canSelectText() const
{
    return !ask(
        text(), [](const QLineEdit &line) { return line.text().isEmpty(); },
        [](const QPlainTextEdit &box) { return box.document()->isEmpty(); });
}

bool EditMenu::hasSelectedRecords() const
{
    return m_parts.list.selectedCount() > 0;
}

bool EditMenu::hasRecords() const
{
    return m_parts.list.countOfArrangedObjects() > 0;
}

// Doing it

void EditMenu::run(const char *textOperation, void (RecordCommands::*onRecords)())
{
    QWidget *edited = text();
    if (!edited && isTableFocused()) {
        (m_recordCommands.*onRecords)();
        return;
    }
    auto *box = qobject_cast<QPlainTextEdit *>(edited);
    if (box && qstrcmp(textOperation, "del") == 0)
        box->textCursor().deleteChar();
    else if (auto *line = qobject_cast<QLineEdit *>(edited); line && qstrcmp(textOperation, "del") == 0)
        line->del();
    else
        QMetaObject::invokeMethod(edited ? edited : m_focus.data(), textOperation);
    m_state.note();
}

void EditMenu::undo()
{
    if (!holdsTyping()) {
        if (m_parts.commitEditing())
            m_parts.document.undoManager()->undo();
        m_parts.document.flushChanges();
        return;
    }
    const bool isUndone = ask(text(), std::mem_fn(&QLineEdit::isUndoAvailable),
                              [](const QPlainTextEdit &box) { return box.document()->isUndoAvailable(); });
    if (isUndone)
        QMetaObject::invokeMethod(text(), "undo");
    else if (m_focus == m_parts.table.cellDelegate().editor())
        m_parts.table.cellDelegate().revertEditor();
    else
        m_parts.pane.revert(m_focus);
    m_state.note();
}

void EditMenu::redo()
{
    if (canRedoText())
        QMetaObject::invokeMethod(text(), "redo");
    else if (!holdsTyping() && m_parts.commitEditing())
        m_parts.document.undoManager()->redo();
    m_parts.document.flushChanges();
    m_state.note();
}

} // namespace runebook
