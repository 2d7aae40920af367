#pragma once

#include "scripting/classes/NewObject.h"
#include "tabbar/VXTabBarControl.h"

#include <QMenu>

namespace runebook {

/// Operations of a tab bar whose C++ forms scripts cannot call as they are.
class TabBarOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QList<QObject *> cells(VXTabBarControl *bar) const;
    Q_INVOKABLE QList<QObject *> viewControllers(VXTabBarControl *bar) const;
    Q_INVOKABLE QObject *overflowPopUpButton(VXTabBarControl *bar) const;
    Q_INVOKABLE QVariantMap encodeWithCoder(VXTabBarControl *bar) const;
    /// A bar with the settings of an archive.
    Q_INVOKABLE runebook::bridge::NewObject initWithCoder(VXTabBarControl *,
                                                          const QVariantMap &archive) const;
    Q_INVOKABLE void menuNeedsUpdate(VXTabBarControl *bar, QMenu *menu) const;
};

/// Makes them known to the bridge, with the class.
void registerTabBarOperations();

} // namespace runebook
