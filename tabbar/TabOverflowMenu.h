#pragma once

class QMenu;

namespace runebook {

class TabBarDelegate;
class TabStrip;

/// Fills \a menu anew with the tabs of \a bar that found no room, each for selecting it; a long menu begins
/// with a field in which one types what the titles have to contain. \a delegate says which may be chosen.
void fillOverflowMenu(QMenu &menu, TabStrip &bar, const TabBarDelegate &delegate);

} // namespace runebook
