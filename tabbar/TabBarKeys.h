#pragma once

#include <Qt>

class QKeyEvent;
class QWheelEvent;

namespace runebook {

class TabStrip;

/// The keys of a tab bar, those of its window and those of its own, and the wheel: select, move and close.
class TabBarKeys
{
public:
    /// Makes the keys of the window.
    explicit TabBarKeys(TabStrip &bar);

    /// False for keys that mean nothing to the bar.
    bool press(const QKeyEvent &event);
    /// Not around the ends: nobody sees a wheel's jump coming.
    void turn(const QWheelEvent &event);

private:
    void selectNeighbour(int step);
    void moveSelected(int step);
    void select(int index);
    /// -1 for none.
    int selection() const;

    TabStrip &m_bar;
    int m_wheelDelta = 0; ///< of what is no whole notch yet
};

} // namespace runebook
