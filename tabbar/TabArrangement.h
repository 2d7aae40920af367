#pragma once

#include "tabbar/TabPlaces.h"
#include "tabbar/TabStrip.h"

#include <QObject>
#include <QVariantAnimation>

namespace runebook {

/// Gives the tabs of a bar their places and lets them slide there; knows which tabs found one.
class TabArrangement : public QObject
{
    Q_OBJECT
public:
    /// For \a bar, whose widget owns this.
    explicit TabArrangement(TabStrip &bar);

    enum class Way { AtOnce, Slide };
    /// While the pointer is over the tabs the places stay, so that closing several in a row brings the next
    /// close button under it; another bar, other rules or more tabs than places are no such case. \a kept:
    /// the index of the tab that gets a place in any case, or -1.
    void layOut(const TabBarMeasures &bar, qsizetype kept, Way way);
    /// The places are computed anew by the next layout.
    void forgetPlaces() { m_places.forget(); }
    void noteMoved(uint from, uint to) { m_places.move(from, to); }
    /// Indexes are out of step until the next layout.
    void noteRemoved() { m_shown.clear(); }

    const TabPlaces &places() const { return m_places; }
    /// Indexes of the cells that have a place, in the order of the places.
    const QList<int> &shown() const { return m_shown; }
    /// The cell of a shown tab under \a point.
    PSMTabBarCell *cellAtPoint(const QPointF &point) const;

Q_SIGNALS:
    /// The tabs stand where they belong.
    void arrived();
    void overflowChanged(QObject *item, bool isInOverflowMenu);

private:
    bool pointerIsOverTabs() const;
    QList<PSMTabBarCell *> giveFrames(const QList<QRectF> &frames);
    void moveCells(Way way);

    TabStrip &m_bar;
    TabPlaces m_places;
    QList<int> m_shown;
    QVariantAnimation m_slide;
};

} // namespace runebook
