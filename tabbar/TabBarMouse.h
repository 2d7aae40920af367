#pragma once

#include "tabbar/TabStrip.h"

#include <QPointF>
#include <QVariantMap>

class PSMTabDragWindowController;
class QMouseEvent;

namespace runebook {

/// What the pointer does in a tab bar: hovering, selecting, closing, scrubbing and dragging.
///
/// A drag moves the tab along the bar and its neighbours make room as it passes. Carried away from the bar,
/// the tab comes off and follows the pointer in a window of its own; let go over another bar of the program
/// it changes over, elsewhere it slides back. Escape puts everything back.
class TabBarMouse
{
public:
    explicit TabBarMouse(TabStrip &bar);
    ~TabBarMouse();

    void press(const QMouseEvent &event);
    void move(const QMouseEvent &event);
    void release(const QMouseEvent &event);
    /// The pointer has left the bar.
    void leave();
    /// The cells have moved under a pointer that stands still.
    void followPointer();
    bool isDragging() const { return m_isDragging; }
    void cancelDrag();

    /// The last press, for the archive: "x", "y", "button", "modifiers". Empty before the first.
    QVariantMap lastPress() const { return m_lastPress; }

private:
    void hover(const QPointF &point);
    bool isOnCloseButton(const PSMTabBarCell &cell, const QPointF &point) const;
    void scrub(const QPointF &point);
    void startDrag();
    void drag(const QMouseEvent &event);
    void carryAlong(const QPointF &point);
    void moveCellPast(qreal start);
    void tearOff(const QMouseEvent &event);
    void endDrag();
    void drop(const QMouseEvent &event);

    qreal startAlongBar(const QRectF &frame) const;
    qreal extentAlongBar(const QRectF &frame) const;
    qreal alongBar(const QPointF &point) const;
    bool isNearBar(const QPointF &point) const;

    TabStrip &m_bar;
    QPointer<PSMTabBarCell> m_hovered;
    QPointer<PSMTabBarCell> m_pressed;
    Qt::MouseButton m_button = Qt::NoButton;
    bool m_isOnClose = false;
    bool m_isDragging = false;
    QPointF m_pressPoint;
    QPointF m_grabOffset; // from the frame's corner to the pointer
    uint m_dragOrigin = 0; // the index to go back to
    std::unique_ptr<PSMTabDragWindowController> m_dragWindow; // while torn off
    QVariantMap m_lastPress;
};

} // namespace runebook
