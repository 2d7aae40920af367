#pragma once

#include <QEvent>
#include <QString>
#include <functional>

class QAction;
class QMenu;
class QWidget;

namespace runebook {

/// Lets the parts of the program put their commands into the menus of every window, without the windows
/// knowing them. Each window asks for the contributions when it builds its menu bar.
class MainMenu
{
public:
    enum Place { File, Edit, View, Glyph, Scripts, Window, Help };
    using Contribution = std::function<void(QMenu &menu, QWidget &window)>;

    static void addContribution(Place place, Contribution contribution);
    static void contributeTo(Place place, QMenu &menu, QWidget &window);
    /// Appends a command. Like all commands of a window it first has the window take what is being typed in
    /// it, and does nothing when a field refuses its text.
    static QAction *addCommand(QMenu &menu, QWidget &window, const QString &text,
                               std::function<void()> command);
    /// Has a window take what is being typed in it, through its operation commitEditing; false when a field
    /// refuses its text. A window without that operation has nothing to take.
    static bool commitEditing(QWidget &window);

    /// A window that validates its menus in the next turn of the event loop does it now when it gets such an
    /// event.
    static QEvent::Type validationEvent();
    /// Has the windows in whose menus \a item stands validate it now.
    static void validate(const QAction &item);

    /// The menu at \a place that all windows show in their menu bars, for content there is one of; made empty
    /// and not visible on first call. Whoever fills it gives it a title and makes it visible.
    static QMenu *sharedMenu(Place place);
};

} // namespace runebook
