#pragma once

#include <QString>
#include <functional>

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

    /// The menu at \a place that all windows show in their menu bars, for content there is one of; made empty
    /// and not visible on first call. Whoever fills it gives it a title and makes it visible.
    static QMenu *sharedMenu(Place place);
};

} // namespace runebook
