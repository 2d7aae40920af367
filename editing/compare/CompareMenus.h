#pragma once

#include <QObject>
#include <array>

class QAction;
class QMenu;
class VXCompareDataWindow;
class VXDocument;

namespace runebook {

/// The menu bar of the compare window: every command with its text and its key. What a command does is an
/// operation of the window, which also knows when it can act.
class CompareMenus : public QObject
{
    Q_OBJECT
public:
    enum Command {
        Save,
        Close,
        Undo,
        Redo,
        CopyText,
        SelectAll,
        ShowOnlyRight,
        ShowOnlyLeft,
        ShowDifferent,
        OnlyDifferences,
        IgnoreCase,
        IgnoreSpaces,
        CopyReport,
        CopyReportOfSelected,
        SaveReport,
        SaveReportOfSelected,
        JsonReports,
        NextDifference,
        PreviousDifference,
        TakeFieldLeft,
        TakeFieldRight,
        TakeLeft,
        TakeRight,
        TakeAllLeft,
        TakeAllRight,
        Remove,
        CopyLeft,
        CopyRight,
        CompareAgain,
        CommandCount
    };

    explicit CompareMenus(VXCompareDataWindow &window);

    QAction *action(Command command) const { return m_actions[command]; }
    /// Names the steps that Undo and Redo would take, in the documents that they are steps of.
    void showHistory(VXDocument *toUndo, VXDocument *toRedo);

private:
    using Operation = void (VXCompareDataWindow::*)();

    QMenu *addMenu(const QString &title);
    void add(QMenu *menu, Command command);
    void buildFileMenu();
    void buildEditMenu();
    void addHistory(QMenu *menu, bool isLeft);
    void buildViewMenu();
    void addIgnoredFields(QMenu *menu);
    void buildCompareMenu();
    void buildWindowMenu();

    VXCompareDataWindow &m_window;
    std::array<QAction *, CommandCount> m_actions {};
};

} // namespace runebook
