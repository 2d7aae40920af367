#pragma once

#include "editing/window/RowMenu.h"

#include <functional>
#include <vector>

class QAction;
class QMenu;
class QWidget;
class VXMenuButton;
class VXSplitViewWindowController;

namespace runebook {

class EditMenu;
class FocusRound;
class ManyCommands;

class NameCommands;
class RecordCommands;
class ReplaceCommand;
class StateChange;
class TableCommands;
class UndoOnlyMenu;
class WindowFilters;
class WindowProblems;
class WindowSearch;
class WindowValues;

/// The features of a document window whose commands stand in its menus.
struct WindowFeatures {
    RecordCommands &commands;
    WindowSearch &search;
    WindowFilters &filters;
    WindowProblems &problems;
    NameCommands &names;
    WindowValues &values;
    ReplaceCommand &replace;
    TableCommands &tables;
    ManyCommands &many;
};

/// The menu bar of a document window: every command with its text, its shortcut, and when it can act.
class WindowMenus : public QObject
{
    Q_OBJECT
public:
    WindowMenus(VXSplitViewWindowController &window, const WindowParts &parts, const WindowFeatures &features,
                StateChange &state);

    /// The actions that the toolbar shows too.
    QAction *addAction() const { return m_addAction; }
    QAction *removeAction() const { return m_removeAction; }
    QAction *addConditionAction() const { return m_addConditionAction; }
    /// A button for the toolbar with the commands on the selected glyphs.
    VXMenuButton *makeGlyphButton(QWidget *parent) const;

    /// Enables each command that can act now, and names the steps that undo and redo would take. A window
    /// that comes up behind the others has time for it until it becomes active.
    void validate();
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    using Condition = std::function<bool()>;

    /// Has a command of a menu that is filled anew do something; what is being typed is taken first.
    void setCommand(QAction *action, std::function<void()> command);
    QAction *addCommand(QMenu *menu, const QString &text, const QKeySequence &shortcut,
                        std::function<void()> command, Condition condition = {});
    void buildFileMenu();
    void buildEditMenu();
    void buildViewMenu();
    void buildFiltersMenu(QMenu &view);
    void buildGlyphMenu();
    void buildManyCommands(QMenu &menu, const Condition &hasSelection);
    void buildScriptsMenu();
    void buildWindowMenu();
    void buildHelpMenu();
    void fillSelectSame(QMenu *menu);
    /// Opening a menu and pressing a key find every command as it would act then.
    void followMenus();
    void addAreas();

    VXSplitViewWindowController &m_window;
    WindowParts m_parts;
    WindowFeatures m_features;
    StateChange &m_state;
    bool m_isValidationDue = false;
    std::vector<std::pair<QAction *, Condition>> m_conditions;
    FocusRound
        *m_focusRound; ///< asks the window for its parts, so it goes with this, while the window is whole
    RowMenu m_rowMenu; ///< of commands of the Edit and the Glyph menu
    QAction *m_undoAction = nullptr;
    QAction *m_redoAction = nullptr;
    EditMenu *m_editMenu;
    UndoOnlyMenu *m_undoOnlyMenu;
    QMenu *m_glyphMenu = nullptr;
    QAction *m_addAction = nullptr;
    QAction *m_removeAction = nullptr;
    QAction *m_addConditionAction = nullptr;
    QAction *m_filterOnAction = nullptr;
    QAction *m_sidebarAction = nullptr;
    QAction *m_problemsAction = nullptr;
    QAction *m_valuesAction = nullptr;
};

} // namespace runebook
