#pragma once

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QObject>
#include <QVariant>

namespace runebook {

/// What scripts ask a menu. A menu that is filled when it shows is filled first. Indexes count from 0,
/// separators included.
class MenuOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString title(QMenu *menu) const;
    Q_INVOKABLE QList<QObject *> itemArray(QMenu *menu) const;
    Q_INVOKABLE int numberOfItems(QMenu *menu) const;
    /// Throws std::out_of_range.
    Q_INVOKABLE QObject *itemAtIndex(QMenu *menu, int index) const;
    /// Null when there is none, as for the title.
    Q_INVOKABLE QObject *itemWithTag(QMenu *menu, int tag) const;
    Q_INVOKABLE QObject *itemWithTitle(QMenu *menu, const QString &title) const;
    /// Told before the menu shows, by menuNeedsUpdate(QMenu *) if it has that. Not owned.
    Q_INVOKABLE QObject *delegate(QMenu *menu) const;
    Q_INVOKABLE void setDelegate(QMenu *menu, QObject *delegate);
};

/// The same for the menu bar of a window: its items are those that open its menus.
class MenuBarOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QList<QObject *> itemArray(QMenuBar *bar) const;
    Q_INVOKABLE int numberOfItems(QMenuBar *bar) const;
    Q_INVOKABLE QObject *itemAtIndex(QMenuBar *bar, int index) const;
    Q_INVOKABLE QObject *itemWithTag(QMenuBar *bar, int tag) const;
    Q_INVOKABLE QObject *itemWithTitle(QMenuBar *bar, const QString &title) const;
};

/// What scripts ask a menu item; titles and tooltips are the plain ones (see ScriptMenuItems.h).
class MenuItemOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QString title(QAction *item) const;
    Q_INVOKABLE void setTitle(QAction *item, const QString &title) const;
    /// Null for none.
    Q_INVOKABLE QString toolTip(QAction *item) const;
    Q_INVOKABLE void setToolTip(QAction *item, const QString &toolTip) const;
    Q_INVOKABLE int tag(QAction *item) const;
    Q_INVOKABLE void setTag(QAction *item, int tag) const;
    Q_INVOKABLE QVariant representedObject(QAction *item) const;
    Q_INVOKABLE void setRepresentedObject(QAction *item, const QVariant &object) const;
    /// Null for an item that is a command.
    Q_INVOKABLE QObject *submenu(QAction *item) const;
    Q_INVOKABLE bool isSeparatorItem(QAction *item) const;
    Q_INVOKABLE bool isEnabled(QAction *item) const;
    /// 1: ticked, 0: not.
    Q_INVOKABLE int state(QAction *item) const;
};

/// Makes them known to the bridge.
void registerMenuOperations();

} // namespace runebook
