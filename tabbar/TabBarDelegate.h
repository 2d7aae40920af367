#pragma once

#include <QMetaMethod>
#include <QPointer>
#include <array>

class QAction;
class QMenu;

namespace runebook {

/// The optional operations of a tab bar's delegate. The delegate is any object; each operation it declares
/// as a slot or invokable with the name and arguments below is called, the others are passed over:
///
///     bool tabBarShouldCloseTabItem(VXTabBarControl *bar, QObject *item)
///     void tabBarWillCloseTabItem(VXTabBarControl *bar, QObject *item)
///     void tabBarDidCloseTabItem(VXTabBarControl *bar, QObject *item)
///     void tabBarWillUnselectTabItem(VXTabBarControl *bar, QObject *item)
///     void tabBarDidSelectTabItem(VXTabBarControl *bar, QObject *item)
///     bool tabBarDisableTabCloseForTabItem(VXTabBarControl *bar, QObject *item)
///     QString tabBarToolTipForTabItem(VXTabBarControl *bar, QObject *item)
///     void tabBarTabItemIsInOverflowMenu(VXTabBarControl *bar, QObject *item, bool isInOverflowMenu)
///     bool tabBarValidateOverflowMenuItemForTabItem(VXTabBarControl *bar, QAction *menuItem, QObject *item)
///     void tabBarDidHide(VXTabBarControl *bar)
///     QMenu *tabViewMenuForTabItem(VXTabBarControl *bar, QObject *item)
///
/// A menu stays the delegate's own.
class TabBarDelegate
{
public:
    /// \a bar: the first argument of each operation, a pointer to the bar; what it points to outlives this.
    explicit TabBarDelegate(const QGenericArgument &bar) : m_bar(bar) { }

    QObject *object() const { return m_object; }
    /// Looks up which operations \a delegate has; it is not owned and may go at any time. An operation with
    /// the right name but other arguments or result is logged as a warning and never called.
    void setObject(QObject *delegate);

public: // the operations, with what goes for a delegate that does not have them
    bool shouldClose(QObject *item) const; // true
    void willClose(QObject *item) const;
    void didClose(QObject *item) const;
    void willUnselect(QObject *item) const;
    void didSelect(QObject *item) const;
    bool disablesClose(QObject *item) const; // false
    QString toolTip(QObject *item) const; // empty
    void isInOverflowMenu(QObject *item, bool overflow) const;
    bool validates(QAction *menuItem, QObject *item) const; // true
    void didHide() const;
    QMenu *menu(QObject *item) const; // none

private:
    enum Operation {
        ShouldClose,
        WillClose,
        DidClose,
        WillUnselect,
        DidSelect,
        DisableClose,
        ToolTip,
        IsInOverflowMenu,
        ValidateOverflowMenuItem,
        DidHide,
        Menu,
        OperationCount
    };
    template <typename Result, typename... Arguments>
    Result ask(Operation operation, Result otherwise, Arguments... arguments) const;
    template <typename... Arguments> void tell(Operation operation, Arguments... arguments) const;

    QGenericArgument m_bar;
    QPointer<QObject> m_object;
    std::array<QMetaMethod, OperationCount> m_methods;
};

} // namespace runebook
