#include "tabbar/TabWidths.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace runebook {

namespace {

/// The width a tab gets as long as there is room, before anybody shares or shrinks.
qreal candidateWidth(qreal desired, qreal evenShare, const TabWidthRules &rules)
{
    if (rules.sizeCellsToFit)
        return std::ceil(std::min(desired, qreal(rules.cellMaxWidth)));
    if (rules.useFullWidth)
        return std::ceil(std::max(desired, evenShare));
    return rules.cellOptimumWidth;
}

/// Every tab has to be shown: equal shares, of which small fitted tabs need not take all.
QList<qreal> squeezedWidths(const QList<qreal> &desired, qreal evenShare, const TabWidthRules &rules)
{
    const qreal share = std::max(0.0, std::round(evenShare));
    QList<qreal> widths(desired.size(), share);
    if (rules.sizeCellsToFit)
        std::ranges::transform(desired, widths.begin(), [share](qreal own) { return std::min(own, share); });
    return widths;
}

/// Takes up to \a excess points from \a widths, one at a time from the last tab towards the first and round
/// again, and answers how many were to be had above \a minimum.
qreal shrinkRoundRobin(QList<qreal> &widths, qreal excess, qreal minimum)
{
    qreal taken = 0;
    for (bool progress = true; progress && taken < excess;) {
        progress = false;
        for (auto width = widths.rbegin(); width != widths.rend() && taken < excess; ++width) {
            const qreal step = std::min(1.0, *width - minimum);
            if (step <= 0)
                continue;
            *width -= step;
            taken += step;
            progress = true;
        }
    }
    return taken;
}

} // namespace

QList<qreal> tabWidths(const QList<qreal> &desired, qreal available, const TabWidthRules &rules)
{
    const qreal evenShare = desired.isEmpty() ? 0 : available / qreal(desired.size());
    QList<qreal> widths;
    widths.reserve(desired.size());
    qreal total = 0;
    for (const qreal own : desired) {
        const qreal candidate = candidateWidth(own, evenShare, rules);
        if (total + candidate < available) {
            widths.append(candidate);
            total += candidate;
        } else if (!rules.useOverflowMenu) {
            return squeezedWidths(desired, evenShare, rules);
        } else if (rules.sizeCellsToFit) {
            const qreal needed = std::min(candidate, qreal(rules.cellMinWidth));
            total -= shrinkRoundRobin(widths, total + needed - available, rules.cellMinWidth);
            if (total + needed > available)
                break;
            widths.append(needed);
            total += needed;
        } else {
            const qsizetype count = widths.size() + 1;
            const qreal share = available / qreal(count);
            if (share < rules.cellMinWidth)
                break;
            widths.fill(share, count);
            total = available;
        }
    }
    return widths;
}

qsizetype verticalTabCount(qsizetype count, qreal available, qreal cellHeight, bool useOverflowMenu)
{
    if (!useOverflowMenu || cellHeight <= 0)
        return count;
    return std::clamp<qsizetype>(qsizetype(std::floor(available / cellHeight)), 0, count);
}

QList<int> shownTabs(qsizetype shown, qsizetype count, qsizetype kept)
{
    QList<int> indexes(std::min(shown, count));
    std::iota(indexes.begin(), indexes.end(), 0);
    if (!indexes.isEmpty() && kept >= indexes.size() && kept < count)
        indexes.last() = int(kept);
    return indexes;
}

} // namespace runebook
