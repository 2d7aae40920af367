#include "scripting/components/ScriptDelegate.h"

#include "codeeditor/JSTTextView.h"
#include "scripting/bridge/BridgeTypes.h"
#include "scripting/python/CallbackError.h"
#include "scripting/python/MainThread.h"
#include "scripting/python/ScriptRun.h"
#include "tabbar/VXTabBarControl.h"

namespace runebook::bridge {

namespace {

template <typename T> PyObject *toPython(const T &value)
{
    constexpr QMetaType kType = QMetaType::fromType<T>();
    return bridgeType(kType).toPython(kType, &value);
}

} // namespace

QObject *ScriptDelegate::forObject(PyObject *object)
{
    auto &own = *reinterpret_cast<BridgeObject *>(object);
    if (!own.instance.object) {
        auto *delegate = new ScriptDelegate(object);
        const auto end = [delegate](void *) {
            delegate->m_object = nullptr;
            if (isOnMainThread())
                delete delegate;
            else
                delegate->deleteLater();
        };
        adopt(own, {std::shared_ptr<void>(nullptr, end), delegate});
    }
    return own.instance.object;
}

/// The lock must be held. Null, with no error set, when the object has no such method or it failed.
template <typename... Arguments>
PythonRef ScriptDelegate::call(const char *selector, const Arguments &...arguments)
{
    const PythonRef object = PythonRef::shared(m_object);
    const PythonRef method(object ? py.PyObject_GetAttrString(object.get(), selector) : nullptr);
    if (!method) {
        if (!clearMissingAttribute())
            reportCallbackError();
        return {};
    }
    std::vector<PythonRef> items;
    (..., items.emplace_back(toPython(arguments)));
    const PythonRef tuple = tupleOf(std::move(items));
    PythonRef answer(tuple ? py.PyObject_CallObject(method.get(), tuple.get()) : nullptr);
    if (!answer)
        reportCallbackError();
    return answer;
}

template <typename Result, typename... Arguments>
Result ScriptDelegate::ask(const char *selector, Result otherwise, const Arguments &...arguments)
{
    const PythonLock lock;
    const PythonRef answer = call(selector, arguments...);
    if (!answer)
        return otherwise;
    constexpr QMetaType kType = QMetaType::fromType<Result>();
    Result result {};
    if (bridgeType(kType).fromPython(kType, answer.get(), &result))
        return result;
    reportCallbackError();
    return otherwise;
}

template <typename... Arguments>
void ScriptDelegate::tell(const char *selector, const Arguments &...arguments)
{
    const PythonLock lock;
    call(selector, arguments...);
}

// Tab bars

bool ScriptDelegate::tabBarShouldCloseTabItem(VXTabBarControl *bar, QObject *item)
{
    return ask("tabBar_shouldCloseTabItem_", true, bar, item);
}

void ScriptDelegate::tabBarWillCloseTabItem(VXTabBarControl *bar, QObject *item)
{
    tell("tabBar_willCloseTabItem_", bar, item);
}

void ScriptDelegate::tabBarDidCloseTabItem(VXTabBarControl *bar, QObject *item)
{
    tell("tabBar_didCloseTabItem_", bar, item);
}

void ScriptDelegate::tabBarWillUnselectTabItem(VXTabBarControl *bar, QObject *item)
{
    tell("tabBar_willUnselectTabItem_", bar, item);
}

void ScriptDelegate::tabBarDidSelectTabItem(VXTabBarControl *bar, QObject *item)
{
    tell("tabBar_didSelectTabItem_", bar, item);
}

bool ScriptDelegate::tabBarDisableTabCloseForTabItem(VXTabBarControl *bar, QObject *item)
{
    return ask("tabBar_disableTabCloseForTabItem_", false, bar, item);
}

QString ScriptDelegate::tabBarToolTipForTabItem(VXTabBarControl *bar, QObject *item)
{
    return ask("tabBar_toolTipForTabItem_", QString(), bar, item);
}

void ScriptDelegate::tabBarTabItemIsInOverflowMenu(VXTabBarControl *bar, QObject *item, bool isInMenu)
{
    tell("tabBar_tabItem_isInOverflowMenu_", bar, item, isInMenu);
}

bool ScriptDelegate::tabBarValidateOverflowMenuItemForTabItem(VXTabBarControl *bar, QAction *menuItem,
                                                              QObject *item)
{
    return ask("tabBar_validateOverflowMenuItem_forTabItem_", true, bar, menuItem, item);
}

void ScriptDelegate::tabBarDidHide(VXTabBarControl *bar)
{
    tell("tabBarDidHide_", bar);
}

QMenu *ScriptDelegate::tabViewMenuForTabItem(VXTabBarControl *bar, QObject *item)
{
    return ask("tabView_menuForTabItem_", static_cast<QMenu *>(nullptr), bar, item);
}

// List controllers

void ScriptDelegate::arrayControllerDidCopyObjectCopy(QObject *controller, const InfoPtr &source,
                                                      const InfoPtr &copy)
{
    tell("arrayController_didCopyObject_copy_", controller, source, copy);
}

QObject *ScriptDelegate::tableColumnInTableViewDataCellForRow(int column, QObject *tableView, int row)
{
    return ask<QObject *>("tableColumn_inTableView_dataCellForRow_", nullptr, column, tableView, row);
}

QObject *ScriptDelegate::tableViewDataCellForTableColumnRow(QObject *tableView, int column, int row)
{
    return ask<QObject *>("tableView_dataCellForTableColumn_row_", nullptr, tableView, column, row);
}

void ScriptDelegate::tableViewWillDisplayCellForTableColumnRow(QObject *tableView, QObject *cell, int column,
                                                               int row)
{
    tell("tableView_willDisplayCell_forTableColumn_row_", tableView, cell, column, row);
}

bool ScriptDelegate::tableViewShouldEditTableColumnRow(QObject *tableView, int column, int row)
{
    return ask("tableView_shouldEditTableColumn_row_", true, tableView, column, row);
}

QObject *ScriptDelegate::viewAtColumnRowMakeIfNecessary(int column, int row, bool isMade)
{
    return ask<QObject *>("viewAtColumn_row_makeIfNecessary_", nullptr, column, row, isMade);
}

bool ScriptDelegate::tableViewShouldShowCellExpansionForTableColumnRow(QObject *tableView, int column,
                                                                       int row)
{
    return ask("tableView_shouldShowCellExpansionForTableColumn_row_", false, tableView, column, row);
}

// Validating text fields

bool ScriptDelegate::textFieldHasValidContent(QObject *field)
{
    return ask("textFieldHasValidContent_", true, field);
}

/// A script that does not know of the field may know of the text view.
QStringList ScriptDelegate::textFieldTextViewCandidatesForSelectedRange(QObject *field, QObject *textView,
                                                                        const QStringList &words,
                                                                        UnitRange range)
{
    const PythonLock lock;
    PythonRef answer = call("textField_textView_candidates_forSelectedRange_", field, textView, words, range);
    if (!answer)
        answer =
            call("textView_completions_forPartialWordRange_indexOfSelectedItem_", textView, words, range, 0);
    return completions(answer, nullptr);
}

// Menus

void ScriptDelegate::menuNeedsUpdate(QMenu *menu)
{
    tell("menuNeedsUpdate_", menu);
}

// Code text views

void ScriptDelegate::textDidChange(JSTTextView *view)
{
    tell("textDidChange_", view);
}

void ScriptDelegate::textViewDidChangeSelection(JSTTextView *view)
{
    tell("textViewDidChangeSelection_", view);
}

bool ScriptDelegate::textViewShouldChangeTextInRangeReplacementString(JSTTextView *view, TextRange range,
                                                                      const QString &replacement)
{
    return ask("textView_shouldChangeTextInRange_replacementString_", true, view, range, replacement);
}

/// The script answers its words, or a tuple of them and the index of the one to offer first.
QStringList ScriptDelegate::textViewCompletionsForPartialWordRangeIndexOfSelectedItem(
    JSTTextView *view, const QStringList &words, TextRange range, int *selectedIndex)
{
    const PythonLock lock;
    return completions(
        call("textView_completions_forPartialWordRange_indexOfSelectedItem_", view, words, range, 0),
        selectedIndex);
}

/// The lock must be held.
QStringList ScriptDelegate::completions(const PythonRef &answer, int *selectedIndex)
{
    if (!answer || isNone(answer.get()))
        return {};
    const bool isPair = isKind(answer.get(), python::kTupleSubclass) && py.PyTuple_Size(answer.get()) == 2;
    PyObject *list = isPair ? py.PyTuple_GetItem(answer.get(), 0) : answer.get();
    QStringList own;
    int selected = 0;
    const QMetaType listType(QMetaType::QStringList), intType(QMetaType::Int);
    const bool isRead = bridgeType(listType).fromPython(listType, list, &own)
        && (!isPair
            || bridgeType(intType).fromPython(intType, py.PyTuple_GetItem(answer.get(), 1), &selected));
    if (!isRead) {
        reportCallbackError();
        return {};
    }
    if (isPair && selectedIndex)
        *selectedIndex = selected;
    return own;
}

} // namespace runebook::bridge
