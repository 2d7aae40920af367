#pragma once

#include <QPoint>
#include <memory>

class PSMTabBarCell;
class PSMTabDragWindow;
class QMimeData;

namespace runebook {
class TabStrip;
} // namespace runebook

/// A tab on its way outside its bar: its window, and what it carries. One lives as long as the tab is off.
class PSMTabDragWindowController
{
public:
    /// \a grabOffset leads from the tab's corner to the pointer, in points.
    PSMTabDragWindowController(runebook::TabStrip &bar, const PSMTabBarCell &cell, const QPoint &grabOffset);
    ~PSMTabDragWindowController();

    const QMimeData &mimeData() const { return *m_mimeData; }
    PSMTabDragWindow *window() const { return m_window.get(); }
    /// Brings the tab under \a pointer, in screen coordinates. Where the window system does not let a program
    /// place its windows nothing is shown, and the drag goes on without.
    void moveTo(const QPoint &pointer);
    void hide();

private:
    std::unique_ptr<QMimeData> m_mimeData;
    std::unique_ptr<PSMTabDragWindow> m_window;
    QPoint m_grabOffset;
};
