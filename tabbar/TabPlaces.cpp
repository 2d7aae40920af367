#include "tabbar/TabPlaces.h"

#include "tabbar/PSMTabBarCell.h"
#include "tabbar/PSMTabStyle.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace runebook {

namespace {

enum class OverflowButton { Without, With };

QList<qreal> extentsFor(const TabBarMeasures &bar, const QList<PSMTabBarCell *> &cells, OverflowButton button)
{
    const qreal length = bar.orientation == Qt::Horizontal ? bar.size.width() : bar.size.height();
    const qreal after = bar.style->rightMargin(bar.hasAddButton, button == OverflowButton::With);
    const qreal available = length - bar.style->leftMargin() - after - bar.compensation;
    if (bar.orientation == Qt::Vertical) {
        const qreal cellHeight = bar.thickness();
        return QList<qreal>(verticalTabCount(cells.size(), available, cellHeight, bar.rules.useOverflowMenu),
                            cellHeight);
    }
    QList<qreal> desired(cells.size(), 0);
    if (bar.rules.sizeCellsToFit || bar.rules.useFullWidth)
        std::ranges::transform(cells, desired.begin(), [&bar](const PSMTabBarCell *cell) {
            return bar.style->desiredWidthOfTabCell(*cell, bar.font, bar.rules.cellMinWidth);
        });
    return tabWidths(desired, available, bar.rules);
}

} // namespace

int TabBarMeasures::thickness() const
{
    return int(style->tabCellHeight(font));
}

bool TabPlaces::suit(const TabBarMeasures &bar, qsizetype tabs) const
{
    return m_barSize == bar.size && m_rules == bar.rules && m_hasAddButton == bar.hasAddButton
        && !m_extents.isEmpty() && (m_overflow || tabs <= m_extents.size());
}

void TabPlaces::compute(const TabBarMeasures &bar, const QList<PSMTabBarCell *> &cells)
{
    m_extents = extentsFor(bar, cells, OverflowButton::Without);
    m_overflow = m_extents.size() < cells.size();
    if (m_overflow)
        m_extents = extentsFor(bar, cells, OverflowButton::With);
    m_rules = bar.rules;
    m_barSize = bar.size;
    m_hasAddButton = bar.hasAddButton;
}

void TabPlaces::move(qsizetype from, qsizetype to)
{
    if (from < m_extents.size() && to < m_extents.size())
        m_extents.move(from, to);
}

QList<QRectF> TabPlaces::frames(const TabBarMeasures &bar, qsizetype count) const
{
    QList<QRectF> frames;
    frames.reserve(count);
    qreal position = bar.style->leftMargin();
    for (qsizetype place = 0; place < count; ++place) {
        const qreal extent = m_extents.at(place);
        const qreal start = std::round(position);
        const qreal length = std::round(position + extent) - start;
        position += extent;
        if (bar.orientation == Qt::Vertical)
            frames.append(QRectF(0, start, bar.size.width(), length));
        else if (bar.direction == Qt::RightToLeft)
            frames.append(QRectF(bar.size.width() - start - length, 0, length, bar.thickness()));
        else
            frames.append(QRectF(start, 0, length, bar.thickness()));
    }
    return frames;
}

qreal TabPlaces::end(const TabBarMeasures &bar, qsizetype count) const
{
    return std::accumulate(m_extents.cbegin(), m_extents.cbegin() + count, bar.style->leftMargin());
}

} // namespace runebook
