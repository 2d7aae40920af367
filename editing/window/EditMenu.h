#pragma once

#include "editing/window/FocusedText.h"
#include "editing/window/WindowParts.h"

#include <vector>

class QAction;
class QMenu;

namespace runebook {

class RecordCommands;
class StateChange;

/// Undo, Redo, Cut, Copy, Paste, Delete and Select All of a document window. They act on the text that has
/// the focus, and on records when the table has it; undo and redo act on the text while it holds typing that
/// no record has yet, else on the document. The keys do what the menu does, and its texts say which it is.
class EditMenu : public QObject
{
    Q_OBJECT
public:
    EditMenu(const WindowParts &parts, RecordCommands &commands, StateChange &state, QObject *parent);

    void addUndoCommands(QMenu &menu);
    void addClipboardCommands(QMenu &menu);
    void addSelectAllCommand(QMenu &menu);
    /// Enables and names the commands as they would act now.
    void validate();

private:
    /// One command on what has the focus.
    struct Command {
        QAction *action;
        const char *textOperation; ///< of a text or list with the focus
        QString recordTitle;
        QString textTitle;
        bool (FocusedText::*canChangeText)() const;
        bool (EditMenu::*canChangeRecords)() const;
    };

    QAction *addAction(QMenu &menu, const QString &text, void (EditMenu::*command)());
    void addCommand(QMenu &menu, const Command &command, void (RecordCommands::*onRecords)());
    void run(const char *textOperation, void (RecordCommands::*onRecords)());
    void undo();
    void redo();
    bool isTableFocused() const;
    bool holdsTyping() const;
    bool canUndoText() const;
    bool canPaste() const;
    bool hasSelectedRecords() const;
    bool hasRecords() const;

    WindowParts m_parts;
    RecordCommands &m_recordCommands;
    StateChange &m_state;
    FocusedText m_focus;
    QAction *m_undoAction = nullptr;
    QAction *m_redoAction = nullptr;
    std::vector<Command> m_commands;
};

} // namespace runebook
