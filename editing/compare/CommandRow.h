#pragma once

#include <QAction>
#include <QIcon>
#include <QKeySequence>
#include <functional>

namespace runebook {

/// One command of a window whose commands stand in a table.
template <class Window, class Command> struct CommandRow {
    Command command;
    const char *text; ///< for tr() of the class that makes the menus
    QList<QKeySequence> keys; ///< none that window managers take for themselves
    std::function<void(Window &)> perform;
    const char *icon = nullptr; ///< not shown in menus

    /// The action of this row, which must outlive the action; \a translated is its text. Owned by \a owner.
    QAction *makeAction(const QString &translated, Window &window, QObject *owner) const
    {
        auto *action = new QAction(translated, owner);
        action->setShortcuts(keys);
        if (icon) {
            action->setIcon(QIcon(QString::fromLatin1(icon)));
            action->setIconVisibleInMenu(false);
        }
        QObject::connect(action, &QAction::triggered, &window, [this, &window] { perform(window); });
        return action;
    }
};

/// The keys of the platform for a usual command.
inline QList<QKeySequence> standardKeys(QKeySequence::StandardKey key)
{
    return QKeySequence::keyBindings(key);
}

} // namespace runebook
