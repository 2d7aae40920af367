#pragma once

#include <QAction>
#include <QMenu>
#include <QVariant>

namespace runebook {

/// What scripts know of a menu item beside its action. Titles and tooltips are kept as they are, in dynamic
/// properties of the action where what is shown differs: a form that Qt takes for plain text of a bearable
/// length.
namespace MenuItem {

/// Items are found again by their tag; 0 for one without.
int tag(const QAction &item);
void setTag(QAction &item, int tag);

/// The title that was set; else the shown text without its mnemonic.
QString title(const QAction &item);
void setTitle(QAction &item, const QString &title);

/// Null for none.
QString toolTip(const QAction &item);
void setToolTip(QAction &item, const QString &toolTip);

/// What the item stands for: its dynamic property of that name or else its data; invalid for none.
QVariant representedObject(const QAction &item);
void setRepresentedObject(QAction &item, const QVariant &object);

/// The first of \a actions with that tag, or null.
QAction *withTag(const QList<QAction *> &actions, int tag);

} // namespace MenuItem

} // namespace runebook
