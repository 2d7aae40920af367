#include "scripting/panel/SnippetsPopup.h"

#include "scripting/classes/ScriptMenuItems.h"

#include <QMenu>

namespace runebook {

SnippetsPopup::SnippetsPopup(QWidget *parent) : QToolButton(parent)
{
    setText(tr("Snippets"));
    setToolTip(tr("Insert a piece of code at the caret"));
    setAccessibleName(text());
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    setAutoRaise(true);
    setPopupMode(QToolButton::InstantPopup);
    setMenu(new QMenu(this));
}

int SnippetsPopup::numberOfItems() const
{
    return static_cast<int>(menu()->actions().size());
}

QStringList SnippetsPopup::itemTitles() const
{
    QStringList titles;
    for (const QAction *item : menu()->actions())
        titles << MenuItem::title(*item);
    return titles;
}

QObject *SnippetsPopup::itemAtIndex(int index) const
{
    return menu()->actions().value(index);
}

void SnippetsPopup::removeAllItems()
{
    menu()->clear();
}

QAction *SnippetsPopup::addSnippet(const QString &title, const QString &code)
{
    auto *item = new QAction(menu());
    MenuItem::setTitle(*item, title);
    MenuItem::setRepresentedObject(*item, code);
    menu()->addAction(item);
    connect(item, &QAction::triggered, this, [this, item] { Q_EMIT chosen(item); });
    return item;
}

} // namespace runebook
