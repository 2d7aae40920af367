#pragma once

#include "document/VXDocument.h"

#include <QPointer>
#include <array>

class QAction;
class QMainWindow;
class QMenu;

namespace runebook {

/// The menu bar of the window of a merge: every command with its text and its key. What a command does knows
/// who hears of it, and also when it can act.
class MergeMenus : public QObject
{
    Q_OBJECT
public:
    enum Command {
        Save,
        SaveAs,
        Close,
        Undo,
        Redo,
        CopyText,
        ShowConflicts,
        ShowFromTheirs,
        ShowFromOurs,
        ShowBoth,
        NextConflict,
        PreviousConflict,
        TakeFieldOurs,
        TakeFieldTheirs,
        TakeOurs,
        TakeTheirs,
        TakeRename,
        TakeAllOurs,
        TakeAllTheirs,
        CommandCount
    };

    /// Of \a window, which also owns them, for the result \a document.
    MergeMenus(QMainWindow &window, VXDocument &document);

    QAction *action(Command command) const { return m_actions[command]; }
    void enable(std::initializer_list<Command> commands, bool areEnabled);
    /// Names the steps that Undo and Redo would take.
    void showHistory(UndoManager &undo, bool mayUndo);

Q_SIGNALS:
    void chosen(runebook::MergeMenus::Command command);

private:
    QMenu *addMenu(const QString &title, const QList<QList<Command>> &groups);
    void addCommands(QMenu &menu, const QList<QList<Command>> &groups);
    void buildFileMenu();
    void buildEditMenu();

    QMainWindow &m_window;
    QPointer<VXDocument> m_document;
    std::array<QAction *, CommandCount> m_actions {};
};

} // namespace runebook
