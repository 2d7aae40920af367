#include "editing/window/EditMenu.h"

#include "editing/records/GlyphCellDelegate.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/tables/TableClipboard.h"
#include "editing/window/DetailPane.h"
#include "editing/window/RecordCommands.h"
#include "editing/window/StateChange.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMimeData>

namespace runebook {

EditMenu::EditMenu(const WindowParts &parts, RecordCommands &commands, StateChange &state, QObject *parent)
    : QObject(parent), m_parts(parts), m_recordCommands(commands), m_state(state), m_focus(parts.window)
{
    connect(&m_focus, &FocusedText::changed, &m_state, &StateChange::note);
    m_state.note();
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
        {nullptr, "cut", tr("Cu&t"), tr("Cu&t Text"), &FocusedText::canCut, &EditMenu::hasSelectedRecords},
        &RecordCommands::cut);
    m_commands.back().action->setShortcuts(QKeySequence::Cut);
    addCommand(menu,
               {nullptr, "copy", tr("&Copy"), tr("&Copy Text"), &FocusedText::canCopy,
                &EditMenu::hasSelectedRecords},
               &RecordCommands::copy);
    m_commands.back().action->setShortcuts(QKeySequence::Copy);
    addCommand(
        menu,
        {nullptr, "paste", tr("&Paste"), tr("&Paste Text"), &FocusedText::canPaste, &EditMenu::canPaste},
        &RecordCommands::paste);
    m_commands.back().action->setShortcuts(QKeySequence::Paste);
    // Its key is known to texts and to the table.
    addCommand(menu,
               {nullptr, "del", tr("&Delete"), tr("&Delete Text"), &FocusedText::canDelete,
                &EditMenu::hasSelectedRecords},
               &RecordCommands::deleteSelected);
}

void EditMenu::addSelectAllCommand(QMenu &menu)
{
    addCommand(menu,
               {nullptr, "selectAll", tr("Select &All"), tr("Select &All Text"), &FocusedText::canSelect,
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
    const bool redoesText = isTyping || m_focus.canRedo();
    m_undoAction->setEnabled(isTyping ? canUndoText() : manager->canUndo());
    m_redoAction->setEnabled(redoesText ? m_focus.canRedo() : manager->canRedo());
    name(m_undoAction, tr("&Undo"), tr("&Undo %1"), isTyping ? tr("Typing") : stack->undoText());
    name(m_redoAction, tr("&Redo"), tr("&Redo %1"), redoesText ? tr("Typing") : stack->redoText());

    const bool hasText = m_focus.text();
    const QWidget *focused = m_focus.widget();
    for (const Command &command : m_commands) {
        const bool isOther = !hasText && !isTableFocused() && focused
            && focused->metaObject()->indexOfMethod(QByteArray(command.textOperation) + "()") >= 0;
        command.action->setText(hasText ? command.textTitle : command.recordTitle);
        command.action->setEnabled(hasText ? (m_focus.*command.canChangeText)()
                                           : isOther
                                           || (isTableFocused() && (this->*command.canChangeRecords)()));
    }
}

// What has the focus

bool EditMenu::isTableFocused() const
{
    // Nothing has it yet, or no more: the table is what the window is about.
    const QWidget *focused = m_focus.widget();
    return !focused || focused == &m_parts.table || m_parts.table.viewport() == focused;
}

// What can be done to it

bool EditMenu::holdsTyping() const
{
    const QWidget *edited = m_focus.text();
    if (!edited)
        return false;
    if (edited == m_parts.table.cellDelegate().editor())
        return m_parts.table.cellDelegate().hasPendingText();
    if (m_parts.pane.isAncestorOf(edited))
        return m_parts.pane.hasPendingText(m_focus.widget());
    return canUndoText();
}

bool EditMenu::canUndoText() const
{
    // What was typed can be taken back even where the text has forgotten how.
    const bool isFieldOfRecords = m_parts.pane.isAncestorOf(m_focus.widget())
        || m_focus.widget() == m_parts.table.cellDelegate().editor();
    return isFieldOfRecords || m_focus.canUndo();
}

bool EditMenu::canPaste() const
{
    const QMimeData *clipboard = QApplication::clipboard()->mimeData();
    return clipboard && (clipboard->hasText() || mayHoldTable(*clipboard));
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
    if (!m_focus.text() && isTableFocused()) {
        (m_recordCommands.*onRecords)();
        return;
    }
    m_focus.perform(textOperation);
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
    if (m_focus.canUndo())
        m_focus.perform("undo");
    else if (m_focus.widget() == m_parts.table.cellDelegate().editor())
        m_parts.table.cellDelegate().revertEditor();
    else
        m_parts.pane.revert(m_focus.widget());
    m_state.note();
}

void EditMenu::redo()
{
    if (m_focus.canRedo())
        m_focus.perform("redo");
    else if (!holdsTyping() && m_parts.commitEditing())
        m_parts.document.undoManager()->redo();
    m_parts.document.flushChanges();
    m_state.note();
}

} // namespace runebook
