#include "scripting/panel/SnippetsPopup.h"

#include <QMenu>

namespace runebook {

SnippetsPopup::SnippetsPopup(QWidget *parent) : QToolButton(parent)
{
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
        titles << item->property("title").toString();
    return titles;
}

QObject *SnippetsPopup::itemAtIndex(int index) const
{
    return menu()->actions().value(index);
}

void SnippetsPopup::removeAllItems()
{
    menu()->deleteLater();
    setMenu(new QMenu(this));
}

QAction *SnippetsPopup::addSnippet(const QString &title, const QString &code)
{
    QAction *item = menu()->addAction(title);
    item->setProperty("title", title);
    item->setProperty("representedObject", code);
    connect(item, &QAction::triggered, this, [this, item] { Q_EMIT chosen(item); });
    return item;
}

} // namespace runebook
