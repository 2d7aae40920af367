#include "tabbar/TabArrangement.h"

#include <QCursor>
#include <QPointer>
#include <algorithm>

namespace runebook {

TabArrangement::TabArrangement(TabStrip &bar) : QObject(&bar.widget()), m_bar(bar)
{
    constexpr int kSlideMs = 160;
    m_slide.setStartValue(0.0);
    m_slide.setEndValue(1.0);
    m_slide.setDuration(kSlideMs);
    m_slide.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant &progress) {
        for (PSMTabBarCell *cell : m_bar.cells())
            cell->advance(progress.toReal());
        m_bar.widget().update();
    });
    connect(&m_slide, &QVariantAnimation::finished, this, &TabArrangement::arrived);
}

bool TabArrangement::pointerIsOverTabs() const
{
    const QWidget &bar = m_bar.widget();
    return bar.isVisible() && bar.rect().adjusted(10, 2, -10, -2).contains(bar.mapFromGlobal(QCursor::pos()));
}

void TabArrangement::layOut(const TabBarMeasures &bar, qsizetype kept, Way way)
{
    const QList<PSMTabBarCell *> cells = m_bar.cells();
    if (!m_places.suit(bar, cells.size()) || !pointerIsOverTabs())
        m_places.compute(bar, cells);
    m_shown = shownTabs(m_places.count(), cells.size(), kept);
    const QList<PSMTabBarCell *> changed = giveFrames(m_places.frames(bar, m_shown.size()));
    moveCells(way);
    QList<std::pair<QPointer<QObject>, bool>> news; // who is told may take tabs out
    for (const PSMTabBarCell *cell : changed)
        news.emplaceBack(cell->representedObject(), cell->isInOverflowMenu());
    for (const auto &[item, overflow] : std::as_const(news)) {
        if (item)
            Q_EMIT overflowChanged(item, overflow);
    }
}

/// Answers the cells that went into the overflow menu or came out of it.
QList<PSMTabBarCell *> TabArrangement::giveFrames(const QList<QRectF> &frames)
{
    const QList<PSMTabBarCell *> cells = m_bar.cells();
    QList<bool> isHidden(cells.size(), true);
    for (qsizetype place = 0; place < m_shown.size(); ++place) {
        PSMTabBarCell *cell = cells.at(m_shown.at(place));
        isHidden[m_shown.at(place)] = false;
        if (cell->frame().isEmpty() || cell->isInOverflowMenu())
            cell->setFrame(frames.at(place)); // a new tab appears where it belongs
        cell->setTargetFrame(frames.at(place));
    }
    QList<PSMTabBarCell *> changed;
    for (qsizetype index = 0; index < cells.size(); ++index) {
        if (cells.at(index)->isInOverflowMenu() == isHidden.at(index))
            continue;
        cells.at(index)->setIsInOverflowMenu(isHidden.at(index));
        changed.append(cells.at(index));
    }
    return changed;
}

void TabArrangement::moveCells(Way way)
{
    const QList<PSMTabBarCell *> cells = m_bar.cells();
    const auto standsRight = [&cells](int index) {
        return cells.at(index)->is(PSMTabBarCell::Held)
            || cells.at(index)->frame() == cells.at(index)->targetFrame();
    };
    m_slide.stop();
    if (way == Way::Slide && !std::ranges::all_of(m_shown, standsRight)) {
        m_slide.start();
        return;
    }
    for (const int index : std::as_const(m_shown))
        cells.at(index)->advance(1);
    Q_EMIT arrived();
}

PSMTabBarCell *TabArrangement::cellAtPoint(const QPointF &point) const
{
    if (!m_bar.widget().rect().contains(point.toPoint()))
        return nullptr;
    const QList<PSMTabBarCell *> cells = m_bar.cells();
    for (const int index : m_shown) {
        if (cells.at(index)->frame().contains(point))
            return cells.at(index);
    }
    return nullptr;
}

} // namespace runebook
