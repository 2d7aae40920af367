#pragma once

#include "tabbar/PSMTabBarCell.h"
#include "tabbar/PSMTabStyle.h"

#include <QList>
#include <QMimeData>
#include <QWidget>
#include <memory>

namespace runebook {

/// A tab bar as its own parts see it: the pointer, a tab that is dragged, the grip, assistive technology.
class TabStrip
{
public:
    /// The bar itself.
    virtual QWidget &widget() = 0;
    virtual Qt::Orientation orientation() const = 0;
    virtual const PSMTabStyle &tabStyle() const = 0;
    virtual bool isTabBarHidden() const = 0;
    virtual bool allowsScrubbing() const = 0;
    virtual bool selectsTabsOnMouseDown() const = 0;
    /// Whether a small picture of its view goes with a tab that is dragged off.
    virtual bool carriesMiniatures() const = 0;

public: // tabs; an index counts from 0
    virtual QList<PSMTabBarCell *> cells() const = 0;
    /// The indexes of the cells that have a place, in the order of the places.
    virtual QList<int> shownCells() const = 0;
    virtual PSMTabBarCell *cellAtPoint(const QPointF &point) const = 0;
    virtual PSMTabBarCell *cellForTabItem(const QObject *item) const = 0;
    virtual uint countOfTabItems() const = 0;
    virtual uint indexOfTabItem(const QObject *item) const = 0;
    virtual QObject *selectedTabItem() const = 0;
    virtual void selectTabItem(QObject *item) = 0;
    virtual void closeTabItem(QObject *item) = 0;

public: // dragging
    /// Moves a tab without showing it yet; slide() does.
    virtual void moveQuietly(QObject *item, uint index) = 0;
    /// Lets the tabs slide to their places.
    virtual void slide() = 0;
    /// Tells that the user has moved \a item.
    virtual void tellMoved(QObject *item) = 0;
    virtual std::unique_ptr<QMimeData> mimeDataForTabItem(QObject *item) = 0;
    virtual bool acceptDroppedTab(const QMimeData &dragged, const QPointF &point) = 0;
    /// The grip was moved by \a delta points.
    virtual void resizeByHandle(int delta) = 0;

protected:
    ~TabStrip() = default;
};

} // namespace runebook

Q_DECLARE_INTERFACE(runebook::TabStrip, "runebook.TabStrip")
