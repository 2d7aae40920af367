#pragma once

#include "tabbar/TabWidths.h"

#include <QFont>
#include <QRectF>
#include <QSize>

class PSMTabBarCell;
class PSMTabStyle;

namespace runebook {

/// What of a tab bar decides where its tabs stand.
struct TabBarMeasures {
    const PSMTabStyle *style;
    QFont font;
    Qt::Orientation orientation = Qt::Horizontal;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    QSize size;
    bool hasAddButton = false;
    int compensation = 0; ///< points at the end of the bar that stay free
    TabWidthRules rules;

    /// Across the tabs of a horizontal bar, and of one tab of a vertical one.
    int thickness() const;
};

/// The places for tabs in a bar, one behind the other: how many there are and how long each is.
class TabPlaces
{
public:
    /// Whether the places are those of such a bar, and enough for so many tabs.
    bool suit(const TabBarMeasures &bar, qsizetype tabs) const;
    void compute(const TabBarMeasures &bar, const QList<PSMTabBarCell *> &cells);
    void forget() { *this = {}; }
    /// A tab takes its place along.
    void move(qsizetype from, qsizetype to);

    qsizetype count() const { return m_extents.size(); }
    /// Whether some tabs find none.
    bool overflow() const { return m_overflow; }
    /// The first \a count of them.
    QList<QRectF> frames(const TabBarMeasures &bar, qsizetype count) const;
    /// Where the last of them ends, along the bar.
    qreal end(const TabBarMeasures &bar, qsizetype count) const;

private:
    QList<qreal> m_extents;
    TabWidthRules m_rules;
    QSize m_barSize;
    bool m_hasAddButton = false;
    bool m_overflow = false;
};

} // namespace runebook
