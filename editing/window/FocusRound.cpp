#include "editing/window/FocusRound.h"

#include <QApplication>

namespace runebook {

namespace {

bool canTakeFocus(const QWidget *widget, const QWidget *area)
{
    return widget && widget->isVisible() && widget->isEnabled()
        && (widget == area || area->isAncestorOf(widget));
}

} // namespace

FocusRound::FocusRound(QObject *parent) : QObject(parent)
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { remember(now); });
}

void FocusRound::add(std::function<QWidget *()> area, std::function<QWidget *()> first)
{
    m_areas.push_back({std::move(area), std::move(first), {}});
}

int FocusRound::areaOf(const QWidget *focus) const
{
    for (std::size_t i = 0; i < m_areas.size(); ++i) {
        const QWidget *area = m_areas[i].widget();
        if (area && focus && (area == focus || area->isAncestorOf(focus)))
            return static_cast<int>(i);
    }
    return -1;
}

void FocusRound::remember(QWidget *focus)
{
    if (const int area = areaOf(focus); area >= 0)
        m_areas[static_cast<std::size_t>(area)].last = focus;
}

void FocusRound::go(int step)
{
    const int count = static_cast<int>(m_areas.size());
    int place = areaOf(QApplication::focusWidget());
    if (place < 0)
        place = step > 0 ? -1 : 0; // from elsewhere to the first or the last
    for (int i = 0; i < count; ++i) {
        place = (place + step + count) % count;
        const Area &area = m_areas[static_cast<std::size_t>(place)];
        QWidget *widget = area.widget();
        if (!widget || !widget->isVisible())
            continue;
        QWidget *target = canTakeFocus(area.last, widget) ? area.last.data() : area.first();
        if (!canTakeFocus(target, widget))
            continue;
        target->setFocus(Qt::OtherFocusReason);
        return;
    }
}

} // namespace runebook
