#pragma once

#include <QList>

namespace runebook {

/// The settings of a tab bar that decide how wide its tabs are. All widths in points.
struct TabWidthRules {
    bool sizeCellsToFit = false;
    bool useFullWidth = false;
    bool useOverflowMenu = true;
    int cellMinWidth = 100;
    int cellMaxWidth = 280;
    int cellOptimumWidth = 130;

    bool operator==(const TabWidthRules &) const = default;
};

/// The widths of the tabs that a horizontal bar shows, first tab first. \a desired holds the width each tab
/// would like, \a available the points they share. Tabs beyond the length of the answer belong in the
/// overflow menu; without one, the answer has a width for every tab. Linear in the number of tabs, but for
/// fitted widths, which shrink point by point.
QList<qreal> tabWidths(const QList<qreal> &desired, qreal available, const TabWidthRules &rules);

/// How many of \a count tabs of \a cellHeight points a vertical bar of \a available points shows; all of
/// them without an overflow menu.
qsizetype verticalTabCount(qsizetype count, qreal available, qreal cellHeight, bool useOverflowMenu);

/// The tabs a bar shows when \a shown of \a count fit: the first ones, but with \a kept (an index, or -1 for
/// none) in the last place when it would otherwise be left out.
QList<int> shownTabs(qsizetype shown, qsizetype count, qsizetype kept);

/// The selection index to fall back to when the tab at \a closed goes and \a selection was selected.
constexpr uint indexAfterClosing(uint selection, uint closed)
{
    if (selection == 0)
        return 0;
    return selection < closed ? selection : selection - 1;
}

} // namespace runebook
