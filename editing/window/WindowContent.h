#pragma once

#include "editing/window/WindowParts.h"

#include <QObject>

class VXSimpleSplitView;
class VXSplitViewWindowController;

namespace runebook {

class NameCommands;
class RecordCommands;
class ManyCommands;
class ReplaceCommand;
class StateChange;
class TableCommands;
struct RestoredParts;
class WindowFilters;
class WindowMenus;
class WindowProblems;
class WindowSearch;
class WindowTitle;
class WindowValues;

/// What stands in a document window and the list of its features, connected with each other. What a feature
/// does stands with each of them.
class WindowContent : public QObject
{
    Q_OBJECT
public:
    /// The widgets become the window's, which puts pane() and view() in their places.
    WindowContent(VXSplitViewWindowController &window, VXDocument &document, RSRTVArrayController &list);
    ~WindowContent() override;

    DetailPane *pane() const { return m_pane; }
    /// The table with what stands above and below it.
    QWidget *view() const { return m_view; }
    const WindowParts &parts() const { return *m_parts; }
    WindowTitle &title() const { return *m_title; }
    RecordCommands &commands() const { return *m_commands; }
    WindowSearch &search() const { return *m_search; }
    WindowFilters &filters() const { return *m_filters; }
    WindowProblems &problems() const { return *m_problems; }
    NameCommands &names() const { return *m_names; }
    WindowValues &values() const { return *m_values; }
    ReplaceCommand &replace() const { return *m_replace; }
    TableCommands &tables() const { return *m_tables; }
    ManyCommands &many() const { return *m_many; }
    RestoredParts restoredParts() const;

    /// Shows the selection in the preview and the detail pane.
    void showSelection();
    /// The same for one that may be large: that is painted first.
    void selectionHasChanged();
    /// Title and menus follow in the next turn of the event loop, once for several calls.
    void updateTitle();
    /// Says why the file of the document could not be read, if so.
    void showReadError();
    void readWhatCanBeRead();

Q_SIGNALS:
    /// Anything that menus depend on may have changed; once in a turn of the event loop.
    void stateChanged();

private:
    void buildView();
    void buildFeatures();
    void buildToolBar();
    void buildStatusBar();
    void connectFeatures();
    void connectDocument();
    /// Says how many conflicts the file has, and why they could not be resolved when that was asked for.
    void offerToResolve(const QString &refusal = {});
    void showSelectedCount();

    VXSplitViewWindowController &m_window;
    VXDocument &m_document;
    RSRTVArrayController &m_list;
    DetailPane *m_pane = nullptr;
    QWidget *m_view = nullptr;
    VXSimpleSplitView *m_sides = nullptr; ///< of the table, with what is below it, and values
    VXSimpleSplitView *m_split = nullptr; ///< of table and problems
    GlyphTableView *m_table = nullptr;
    MessageBar *m_messages = nullptr;
    VXSearchField *m_searchField = nullptr;
    std::unique_ptr<const WindowParts> m_parts;
    StateChange *m_state;
    WindowTitle *m_title = nullptr;
    RecordCommands *m_commands = nullptr;
    WindowSearch *m_search = nullptr;
    WindowFilters *m_filters = nullptr;
    WindowProblems *m_problems = nullptr;
    NameCommands *m_names = nullptr;
    WindowValues *m_values = nullptr;
    ReplaceCommand *m_replace = nullptr;
    TableCommands *m_tables = nullptr;
    ManyCommands *m_many = nullptr;
    WindowMenus *m_menus = nullptr;
    bool m_isSelectionPending = false;
};

} // namespace runebook
