#include "tabbar/TabOverflowMenu.h"

#include "tabbar/TabBarDelegate.h"
#include "tabbar/TabStrip.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QMenu>
#include <QWidgetAction>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr qsizetype kLongestPlainMenu = 15;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TabOverflowMenu)
};

/// \a text as a menu shows it unchanged.
QString plainMenuTitle(QString text)
{
    return text.replace(u"&"_s, u"&&"_s);
}

void addEntry(QMenu &menu, const PSMTabBarCell &cell, TabStrip &bar, const TabBarDelegate &delegate)
{
    QAction *entry = menu.addAction(cell.icon(), plainMenuTitle(cell.displayTitle()));
    entry->setCheckable(cell.is(PSMTabBarCell::Selected)); // the others would show empty boxes
    entry->setChecked(cell.is(PSMTabBarCell::Selected));
    const QPointer<QObject> item = cell.representedObject();
    QObject::connect(entry, &QAction::triggered, &bar.widget(), [&bar, item] { bar.selectTabItem(item); });
    entry->setEnabled(delegate.validates(entry, item));
}

/// A field at the top of a long menu: what is typed in it is what titles have to contain. The menu shows the
/// first of them and says how many more there are.
void addSearch(QMenu *menu)
{
    const QList<QAction *> entries = menu->actions();
    if (entries.size() <= kLongestPlainMenu)
        return;
    auto *field = new QLineEdit;
    field->setPlaceholderText(Texts::tr("Search"));
    field->setAccessibleName(Texts::tr("Search tabs"));
    field->setClearButtonEnabled(true);
    auto *entry = new QWidgetAction(menu);
    entry->setDefaultWidget(field);
    menu->insertAction(entries.first(), entry);
    menu->setActiveAction(entry);
    QObject::connect(
        menu, &QMenu::aboutToShow, field, [field] { field->setFocus(); }, Qt::QueuedConnection);
    field->setFocus();
    QAction *more = menu->addAction(QString());
    more->setEnabled(false);
    // No more than stand below each other: a menu that scrolls cannot be narrowed down.
    const auto show = [entries, more](const QString &text) {
        qsizetype matching = 0;
        for (QAction *other : entries) {
            const bool matches =
                QString(other->text()).replace(u"&&"_s, u"&"_s).contains(text, Qt::CaseInsensitive);
            other->setVisible(matches && ++matching <= kLongestPlainMenu);
        }
        more->setText(Texts::tr("%1 more").arg(matching - kLongestPlainMenu));
        more->setVisible(matching > kLongestPlainMenu);
    };
    show({});
    QObject::connect(field, &QLineEdit::textChanged, menu, [show, menu](const QString &text) {
        menu->setMinimumWidth(menu->width());
        show(text);
    });
    QObject::connect(field, &QLineEdit::returnPressed, menu, [entries, menu] {
        for (QAction *other : entries) {
            if (!other->isVisible() || !other->isEnabled())
                continue;
            menu->close();
            other->trigger();
            return;
        }
    });
}

} // namespace

void fillOverflowMenu(QMenu &menu, TabStrip &bar, const TabBarDelegate &delegate)
{
    menu.clear();
    menu.setMinimumWidth(0);
    for (const PSMTabBarCell *cell : bar.cells()) {
        if (cell->isInOverflowMenu())
            addEntry(menu, *cell, bar, delegate);
    }
    addSearch(&menu);
}

} // namespace runebook
