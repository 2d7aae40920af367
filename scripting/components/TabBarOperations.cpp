#include "scripting/components/TabBarOperations.h"

#include "platform/NotificationCenter.h"
#include "scripting/bridge/BridgedClass.h"
#include "tabbar/PSMOverflowPopUpButton.h"
#include "tabbar/PSMTabBarCell.h"

namespace runebook {

using bridge::BridgedClass, bridge::NewObject;

QList<QObject *> TabBarOperations::cells(VXTabBarControl *bar) const
{
    const QList<PSMTabBarCell *> cells = bar->cells();
    return {cells.begin(), cells.end()};
}

QList<QObject *> TabBarOperations::viewControllers(VXTabBarControl *bar) const
{
    return bar->tabItems();
}

QObject *TabBarOperations::overflowPopUpButton(VXTabBarControl *bar) const
{
    return bar->overflowPopUpButton();
}

QVariantMap TabBarOperations::encodeWithCoder(VXTabBarControl *bar) const
{
    return bar->archive();
}

NewObject TabBarOperations::initWithCoder(VXTabBarControl *, const QVariantMap &archive) const
{
    auto *bar = new VXTabBarControl;
    bar->restoreFromArchive(archive);
    return {bar};
}

void TabBarOperations::menuNeedsUpdate(VXTabBarControl *bar, QMenu *menu) const
{
    bar->menuNeedsUpdate(menu);
}

void registerTabBarOperations()
{
    static TabBarOperations bars;
    BridgedClass::registerExtension(VXTabBarControl::staticMetaObject, &bars);
    BridgedClass::registerClass(VXTabBarControl::staticMetaObject,
                                [] { return bridge::ownedByScripts(new VXTabBarControl); });
    VXTabBarControl::setSharedObserver([](const QString &name, QObject *item) {
        NotificationCenter::defaultCenter().postNotificationNameObject(name, item);
    });
}

} // namespace runebook
