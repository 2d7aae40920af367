#include "platform/MainMenu.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMetaMethod>
#include <QPointer>
#include <map>
#include <utility>
#include <vector>

namespace runebook {

namespace {

std::vector<std::pair<MainMenu::Place, MainMenu::Contribution>> &contributions()
{
    static std::vector<std::pair<MainMenu::Place, MainMenu::Contribution>> list;
    return list;
}

std::map<MainMenu::Place, QPointer<QMenu>> &sharedMenus()
{
    static std::map<MainMenu::Place, QPointer<QMenu>> menus;
    return menus;
}

/// Widgets cannot outlive the application.
void deleteSharedMenus()
{
    for (const auto &[place, menu] : sharedMenus())
        delete menu.data();
    sharedMenus().clear();
}

} // namespace

void MainMenu::addContribution(Place place, Contribution contribution)
{
    contributions().emplace_back(place, std::move(contribution));
}

void MainMenu::contributeTo(Place place, QMenu &menu, QWidget &window)
{
    for (const auto &[where, contribution] : contributions()) {
        if (where == place)
            contribution(menu, window);
    }
}

QAction *MainMenu::addCommand(QMenu &menu, QWidget &window, const QString &text,
                              std::function<void()> command)
{
    QAction *action = menu.addAction(text);
    QObject::connect(action, &QAction::triggered, &window, [&window, command = std::move(command)] {
        if (commitEditing(window))
            command();
    });
    return action;
}

bool MainMenu::commitEditing(QWidget &window)
{
    bool isTaken = true;
    const int operation = window.metaObject()->indexOfMethod("commitEditing()");
    if (operation >= 0)
        window.metaObject()->method(operation).invoke(&window, Qt::DirectConnection,
                                                      Q_RETURN_ARG(bool, isTaken));
    return isTaken;
}

QEvent::Type MainMenu::validationEvent()
{
    static const auto kType = static_cast<QEvent::Type>(QEvent::registerEventType());
    return kType;
}

void MainMenu::validate(const QAction &item)
{
    for (const QObject *place : item.associatedObjects()) {
        QWidget *widget =
            qobject_cast<const QMenu *>(place) ? qobject_cast<QWidget *>(place->parent()) : nullptr;
        while (qobject_cast<QMenu *>(widget))
            widget = widget->parentWidget();
        QEvent event(validationEvent());
        if (widget)
            QCoreApplication::sendEvent(widget->window(), &event);
    }
}

QMenu *MainMenu::sharedMenu(Place place)
{
    QPointer<QMenu> &menu = sharedMenus()[place];
    if (!menu) {
        menu = new QMenu;
        qAddPostRoutine(deleteSharedMenus);
        menu->menuAction()->setVisible(false);
    }
    return menu;
}

} // namespace runebook
