#include "tabbar/TabBarMouse.h"

#include "tabbar/PSMTabDragWindowController.h"

#include <QApplication>
#include <QCursor>
#include <QMimeData>
#include <QMouseEvent>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

/// Points beyond the bar's edge at which a carried tab comes off.
constexpr qreal kTearOffDistance = 28;

} // namespace

TabBarMouse::TabBarMouse(TabStrip &bar) : m_bar(bar) { }

TabBarMouse::~TabBarMouse() = default;

// --- hovering

bool TabBarMouse::isOnCloseButton(const PSMTabBarCell &cell, const QPointF &point) const
{
    return !cell.isCloseButtonSuppressed()
        && m_bar.tabStyle().closeButtonRect(cell.frame(), m_bar.widget().layoutDirection()).contains(point);
}

void TabBarMouse::hover(const QPointF &point)
{
    PSMTabBarCell *cell = m_bar.cellAtPoint(point);
    bool changed = false;
    if (m_hovered && m_hovered != cell) {
        changed |= m_hovered->setState(PSMTabBarCell::Hovered, false);
        changed |= m_hovered->setState(PSMTabBarCell::CloseHovered, false);
    }
    m_hovered = cell;
    if (cell) {
        changed |= cell->setState(PSMTabBarCell::Hovered, true);
        changed |= cell->setState(PSMTabBarCell::CloseHovered, isOnCloseButton(*cell, point));
    }
    if (changed)
        m_bar.widget().update();
}

void TabBarMouse::leave()
{
    hover(QPointF(-1, -1));
}

void TabBarMouse::followPointer()
{
    if (m_bar.widget().underMouse() && !m_isDragging)
        hover(m_bar.widget().mapFromGlobal(QCursor::pos()));
}

// --- clicking

void TabBarMouse::press(const QMouseEvent &event)
{
    m_lastPress = {{u"x"_s, event.position().x()},
                   {u"y"_s, event.position().y()},
                   {u"button"_s, int(event.button())},
                   {u"modifiers"_s, int(event.modifiers())}};
    if (m_isDragging || (event.button() != Qt::LeftButton && event.button() != Qt::MiddleButton))
        return;
    PSMTabBarCell *cell = m_bar.cellAtPoint(event.position());
    m_pressed = cell;
    m_button = event.button();
    if (!cell)
        return;
    m_pressPoint = event.position();
    m_grabOffset = event.position() - cell->frame().topLeft();
    m_isOnClose = m_button == Qt::LeftButton && isOnCloseButton(*cell, event.position());
    cell->setState(m_isOnClose ? PSMTabBarCell::ClosePressed : PSMTabBarCell::Pressed, true);
    m_bar.widget().update();
    const bool plain = m_button == Qt::LeftButton && !m_isOnClose;
    if (plain && (m_bar.selectsTabsOnMouseDown() || m_bar.allowsScrubbing()))
        m_bar.selectTabItem(cell->representedObject());
}

void TabBarMouse::move(const QMouseEvent &event)
{
    if (m_isDragging) {
        drag(event);
        return;
    }
    hover(event.position());
    if (!m_pressed || m_isOnClose || m_button != Qt::LeftButton || !(event.buttons() & Qt::LeftButton))
        return;
    if (m_bar.allowsScrubbing()) {
        scrub(event.position());
    } else if ((event.position() - m_pressPoint).manhattanLength() >= QApplication::startDragDistance()
               && m_bar.countOfTabItems() > 1) {
        startDrag();
        drag(event);
    }
}

void TabBarMouse::scrub(const QPointF &point)
{
    if (const PSMTabBarCell *cell = m_bar.cellAtPoint(point))
        m_bar.selectTabItem(cell->representedObject());
}

void TabBarMouse::release(const QMouseEvent &event)
{
    if (m_isDragging) {
        if (event.button() == Qt::LeftButton)
            drop(event);
        return;
    }
    if (event.button() != m_button)
        return;
    const QPointer<PSMTabBarCell> cell = std::exchange(m_pressed, nullptr);
    m_button = Qt::NoButton;
    if (!cell)
        return;
    cell->setState(PSMTabBarCell::Pressed, false);
    cell->setState(PSMTabBarCell::ClosePressed, false);
    m_bar.widget().update();
    if (m_bar.cellAtPoint(event.position()) != cell)
        return;
    if (event.button() == Qt::MiddleButton || m_isOnClose) {
        const bool closes = !m_isOnClose || isOnCloseButton(*cell, event.position());
        if (closes && !cell->isCloseButtonSuppressed())
            m_bar.closeTabItem(cell->representedObject());
    } else {
        m_bar.selectTabItem(cell->representedObject());
    }
}

// --- dragging

qreal TabBarMouse::alongBar(const QPointF &point) const
{
    return m_bar.orientation() == Qt::Vertical ? point.y() : point.x();
}

qreal TabBarMouse::startAlongBar(const QRectF &frame) const
{
    if (m_bar.orientation() == Qt::Vertical)
        return frame.top();
    return m_bar.widget().layoutDirection() == Qt::RightToLeft ? m_bar.widget().width() - frame.right()
                                                               : frame.left();
}

qreal TabBarMouse::extentAlongBar(const QRectF &frame) const
{
    return m_bar.orientation() == Qt::Vertical ? frame.height() : frame.width();
}

/// Along the bar a tab cannot be pulled off: it stops at the ends.
bool TabBarMouse::isNearBar(const QPointF &point) const
{
    const bool vertical = m_bar.orientation() == Qt::Vertical;
    const qreal across = vertical ? point.x() : point.y();
    return across >= -kTearOffDistance
        && across <= (vertical ? m_bar.widget().width() : m_bar.widget().height()) + kTearOffDistance;
}

void TabBarMouse::startDrag()
{
    m_isDragging = true;
    m_dragOrigin = m_bar.indexOfTabItem(m_pressed->representedObject());
    leave(); // what is carried is not hovered
    m_pressed->setState(PSMTabBarCell::Held, true);
    m_bar.widget().grabKeyboard(); // Escape takes it back
}

void TabBarMouse::drag(const QMouseEvent &event)
{
    if (!m_pressed) { // its item went meanwhile
        endDrag();
        return;
    }
    const QPointF point = event.position();
    if (isNearBar(point)) {
        m_dragWindow.reset();
        m_pressed->setState(PSMTabBarCell::TornOff, false);
        carryAlong(point);
    } else {
        tearOff(event);
    }
    m_bar.widget().update();
}

void TabBarMouse::carryAlong(const QPointF &point)
{
    qreal end = m_bar.tabStyle().leftMargin();
    for (const PSMTabBarCell *cell : m_bar.cells()) {
        if (!cell->isInOverflowMenu())
            end = std::max(end, startAlongBar(cell->targetFrame()) + extentAlongBar(cell->targetFrame()));
    }
    QRectF frame = m_pressed->frame();
    const qreal extent = extentAlongBar(frame);
    const QPointF corner = point - m_grabOffset;
    const bool mirrored =
        m_bar.orientation() == Qt::Horizontal && m_bar.widget().layoutDirection() == Qt::RightToLeft;
    const qreal wanted = mirrored ? m_bar.widget().width() - corner.x() - extent : alongBar(corner);
    const qreal start = std::max(m_bar.tabStyle().leftMargin(), std::min(wanted, end - extent));
    if (m_bar.orientation() == Qt::Vertical)
        frame.moveTop(start);
    else
        frame.moveLeft(mirrored ? m_bar.widget().width() - start - extent : start);
    m_pressed->setFrame(frame);
    moveCellPast(start);
}

/// The carried tab stands behind every other tab whose middle, were they packed without it, lies before its
/// own start. This depends on nothing but the pointer, so tabs of unlike widths cannot flicker.
void TabBarMouse::moveCellPast(qreal start)
{
    qreal packed = m_bar.tabStyle().leftMargin();
    uint place = 0;
    QList<uint> places; // the indexes of the shown tabs
    const QList<PSMTabBarCell *> cells = m_bar.cells();
    for (const int index : m_bar.shownCells()) {
        places.append(uint(index));
        const PSMTabBarCell *cell = cells.at(index);
        if (cell == m_pressed)
            continue;
        const qreal extent = extentAlongBar(cell->targetFrame());
        if (packed + extent / 2 < start)
            ++place;
        packed += extent;
    }
    QObject *item = m_pressed->representedObject();
    if (place >= places.size() || places.at(place) == m_bar.indexOfTabItem(item))
        return;
    m_bar.moveQuietly(item, places.at(place));
    m_bar.slide(); // neighbours always slide: a jump would hide what happened
}

void TabBarMouse::tearOff(const QMouseEvent &event)
{
    const QPoint pointer = event.globalPosition().toPoint();
    if (!m_dragWindow) {
        m_pressed->setState(PSMTabBarCell::TornOff, true);
        m_dragWindow =
            std::make_unique<PSMTabDragWindowController>(m_bar, *m_pressed, m_grabOffset.toPoint());
    }
    m_dragWindow->moveTo(pointer);
}

void TabBarMouse::endDrag()
{
    m_isDragging = false;
    m_dragWindow.reset();
    m_bar.widget().releaseKeyboard();
    if (m_pressed) {
        for (const auto flag : {PSMTabBarCell::Held, PSMTabBarCell::TornOff, PSMTabBarCell::Pressed})
            m_pressed->setState(flag, false);
    }
    m_pressed = nullptr;
    m_button = Qt::NoButton;
    m_bar.slide();
}

void TabBarMouse::cancelDrag()
{
    const QPointer<QObject> item = m_pressed ? m_pressed->representedObject() : nullptr;
    m_bar.moveQuietly(item, m_dragOrigin);
    endDrag();
}

void TabBarMouse::drop(const QMouseEvent &event)
{
    const QPointer<QObject> item = m_pressed ? m_pressed->representedObject() : nullptr;
    const std::unique_ptr<PSMTabDragWindowController> dragged = std::move(m_dragWindow);
    endDrag();
    if (!item)
        return;
    if (dragged) {
        dragged->hide();
        const QPoint pointer = event.globalPosition().toPoint();
        QWidget *below = QApplication::widgetAt(pointer);
        auto *target = qobject_cast<TabStrip *>(below);
        if (target && target->acceptDroppedTab(dragged->mimeData(), below->mapFromGlobal(QPointF(pointer))))
            return;
    }
    if (m_bar.indexOfTabItem(item) != m_dragOrigin)
        m_bar.tellMoved(item);
    hover(event.position());
}

} // namespace runebook
