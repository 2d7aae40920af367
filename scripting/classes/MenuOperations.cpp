#include "scripting/classes/MenuOperations.h"

#include "platform/MainMenu.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptMenuItems.h"

#include <QMetaMethod>
#include <QPointer>
#include <QScopeGuard>
#include <QSet>
#include <stdexcept>

namespace runebook {

namespace {

constexpr char kDelegate[] = "delegate";

QList<QAction *> itemsOf(QMenu *menu)
{
    // Whoever fills the menu may ask it what it has already.
    static QSet<const QMenu *> filling;
    if (!filling.contains(menu)) {
        filling.insert(menu);
        const QPointer<QMenu> living(menu);
        const auto done = qScopeGuard([menu] { filling.remove(menu); });
        Q_EMIT menu->aboutToShow();
        if (!living)
            throw std::runtime_error("the menu went away while it was filled");
    }
    return menu->actions();
}

QList<QAction *> itemsOf(QMenuBar *bar)
{
    return bar->actions();
}

QList<QObject *> objects(const QList<QAction *> &items)
{
    return {items.begin(), items.end()};
}

QObject *at(const QList<QAction *> &items, int index)
{
    if (index < 0 || index >= items.size())
        throw std::out_of_range("the menu has no item at that place");
    return items[index];
}

QObject *titled(const QList<QAction *> &items, const QString &title)
{
    const auto found = std::find_if(items.begin(), items.end(), [&title](const QAction *item) {
        return MenuItem::title(*item) == title;
    });
    return found == items.end() ? nullptr : *found;
}

} // namespace

QString MenuOperations::title(QMenu *menu) const
{
    return MenuItem::title(*menu->menuAction());
}

QList<QObject *> MenuOperations::itemArray(QMenu *menu) const
{
    return objects(itemsOf(menu));
}

int MenuOperations::numberOfItems(QMenu *menu) const
{
    return static_cast<int>(itemsOf(menu).size());
}

QObject *MenuOperations::itemAtIndex(QMenu *menu, int index) const
{
    return at(itemsOf(menu), index);
}

QObject *MenuOperations::itemWithTag(QMenu *menu, int tag) const
{
    return MenuItem::withTag(itemsOf(menu), tag);
}

QObject *MenuOperations::itemWithTitle(QMenu *menu, const QString &title) const
{
    return titled(itemsOf(menu), title);
}

QObject *MenuOperations::delegate(QMenu *menu) const
{
    return menu->property(kDelegate).value<QPointer<QObject>>();
}

void MenuOperations::setDelegate(QMenu *menu, QObject *delegate)
{
    menu->setProperty(kDelegate, QVariant::fromValue(QPointer<QObject>(delegate)));
    disconnect(menu, &QMenu::aboutToShow, this, nullptr);
    const int method = delegate ? delegate->metaObject()->indexOfMethod("menuNeedsUpdate(QMenu*)") : -1;
    if (method < 0)
        return;
    connect(menu, &QMenu::aboutToShow, this, [this, menu, method] {
        if (QObject *told = this->delegate(menu))
            told->metaObject()->method(method).invoke(told, Qt::DirectConnection, Q_ARG(QMenu *, menu));
    });
}

QList<QObject *> MenuBarOperations::itemArray(QMenuBar *bar) const
{
    return objects(itemsOf(bar));
}

int MenuBarOperations::numberOfItems(QMenuBar *bar) const
{
    return static_cast<int>(itemsOf(bar).size());
}

QObject *MenuBarOperations::itemAtIndex(QMenuBar *bar, int index) const
{
    return at(itemsOf(bar), index);
}

QObject *MenuBarOperations::itemWithTag(QMenuBar *bar, int tag) const
{
    return MenuItem::withTag(itemsOf(bar), tag);
}

QObject *MenuBarOperations::itemWithTitle(QMenuBar *bar, const QString &title) const
{
    return titled(itemsOf(bar), title);
}

QString MenuItemOperations::title(QAction *item) const
{
    return MenuItem::title(*item);
}

void MenuItemOperations::setTitle(QAction *item, const QString &title) const
{
    MenuItem::setTitle(*item, title);
}

QString MenuItemOperations::toolTip(QAction *item) const
{
    return MenuItem::toolTip(*item);
}

void MenuItemOperations::setToolTip(QAction *item, const QString &toolTip) const
{
    MenuItem::setToolTip(*item, toolTip);
}

int MenuItemOperations::tag(QAction *item) const
{
    return MenuItem::tag(*item);
}

void MenuItemOperations::setTag(QAction *item, int tag) const
{
    MenuItem::setTag(*item, tag);
}

QVariant MenuItemOperations::representedObject(QAction *item) const
{
    return MenuItem::representedObject(*item);
}

void MenuItemOperations::setRepresentedObject(QAction *item, const QVariant &object) const
{
    MenuItem::setRepresentedObject(*item, object);
}

QObject *MenuItemOperations::submenu(QAction *item) const
{
    return item->menu();
}

bool MenuItemOperations::isSeparatorItem(QAction *item) const
{
    return item->isSeparator();
}

bool MenuItemOperations::isEnabled(QAction *item) const
{
    MainMenu::validate(*item);
    return item->isEnabled();
}

int MenuItemOperations::state(QAction *item) const
{
    MainMenu::validate(*item);
    return item->isChecked() ? 1 : 0;
}

void registerMenuOperations()
{
    static MenuOperations menus;
    static MenuBarOperations menuBars;
    static MenuItemOperations menuItems;
    bridge::BridgedClass::registerExtension(QMenu::staticMetaObject, &menus);
    bridge::BridgedClass::registerExtension(QMenuBar::staticMetaObject, &menuBars);
    bridge::BridgedClass::registerExtension(QAction::staticMetaObject, &menuItems);
}

} // namespace runebook
