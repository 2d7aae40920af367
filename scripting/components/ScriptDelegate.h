#pragma once

#include "codeeditor/JSTTextViewDelegate.h"
#include "model/StringHelpers.h"
#include "model/VXGlyphInfo.h"
#include "scripting/python/PythonValue.h"

#include <QAction>
#include <QMenu>
#include <QObject>

class VXTabBarControl;
Q_MOC_INCLUDE("tabbar/VXTabBarControl.h")

namespace runebook::bridge {

/// Stands for an object of a script where the program wants a delegate: calls the methods that the object
/// has under the selectors of the operations below ("tabBar_shouldCloseTabItem_"), and answers for those it
/// has not as if there were no delegate. An error in a method is printed, and the answer is the same; what
/// ends a script ends it when the operation that asked is done. Lives as long as the script's object, which
/// nobody keeps: the script has to.
class ScriptDelegate final : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
public:
    /// The delegate that stands for \a object, an object of a class that a script made. Needs the lock.
    static QObject *forObject(PyObject *object);

public: // tab bars
    Q_INVOKABLE bool tabBarShouldCloseTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarWillCloseTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarDidCloseTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarWillUnselectTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarDidSelectTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE bool tabBarDisableTabCloseForTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE QString tabBarToolTipForTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarTabItemIsInOverflowMenu(VXTabBarControl *bar, QObject *item, bool isInMenu);
    Q_INVOKABLE bool tabBarValidateOverflowMenuItemForTabItem(VXTabBarControl *bar, QAction *menuItem,
                                                              QObject *item);
    Q_INVOKABLE void tabBarDidHide(VXTabBarControl *bar);
    Q_INVOKABLE QMenu *tabViewMenuForTabItem(VXTabBarControl *bar, QObject *item);

public: // list controllers
    Q_INVOKABLE void arrayControllerDidCopyObjectCopy(QObject *controller, const InfoPtr &source,
                                                      const InfoPtr &copy);
    Q_INVOKABLE QObject *tableColumnInTableViewDataCellForRow(int column, QObject *tableView, int row);
    Q_INVOKABLE QObject *tableViewDataCellForTableColumnRow(QObject *tableView, int column, int row);
    Q_INVOKABLE void tableViewWillDisplayCellForTableColumnRow(QObject *tableView, QObject *cell, int column,
                                                               int row);
    Q_INVOKABLE bool tableViewShouldEditTableColumnRow(QObject *tableView, int column, int row);
    Q_INVOKABLE QObject *viewAtColumnRowMakeIfNecessary(int column, int row, bool isMade);
    Q_INVOKABLE bool tableViewShouldShowCellExpansionForTableColumnRow(QObject *tableView, int column,
                                                                       int row);

public: // menus
    Q_INVOKABLE void menuNeedsUpdate(QMenu *menu);

public: // validating text fields
    Q_INVOKABLE bool textFieldHasValidContent(QObject *field);
    Q_INVOKABLE QStringList textFieldTextViewCandidatesForSelectedRange(QObject *field, QObject *textView,
                                                                        const QStringList &words,
                                                                        runebook::UnitRange range);

public: // code text views
    void textDidChange(JSTTextView *view) override;
    void textViewDidChangeSelection(JSTTextView *view) override;
    bool textViewShouldChangeTextInRangeReplacementString(JSTTextView *view, TextRange range,
                                                          const QString &replacement) override;
    QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                          const QStringList &words,
                                                                          TextRange range,
                                                                          int *selectedIndex) override;

private:
    explicit ScriptDelegate(PyObject *object) : m_object(object) { }

    QStringList completions(const PythonRef &answer, int *selectedIndex);
    template <typename... Arguments> PythonRef call(const char *selector, const Arguments &...arguments);
    template <typename Result, typename... Arguments>
    Result ask(const char *selector, Result otherwise, const Arguments &...arguments);
    template <typename... Arguments> void tell(const char *selector, const Arguments &...arguments);

    PyObject *m_object; ///< not kept; null once it is gone
};

} // namespace runebook::bridge
