#include "tabbar/PSMTabDragWindowController.h"

#include "tabbar/PSMTabDragWindow.h"
#include "tabbar/TabStrip.h"

#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int kMiniatureWidth = 220;

bool canPlaceWindows()
{
    return !QGuiApplication::platformName().startsWith("wayland"_L1);
}

QPixmap pictureOfTab(runebook::TabStrip &bar, const PSMTabBarCell &cell)
{
    const QWidget &widget = bar.widget();
    const qreal ratio = widget.devicePixelRatioF();
    QPixmap picture((cell.frame().size() * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    PSMTabBarState state {widget.palette(), widget.font(), bar.orientation(), widget.layoutDirection()};
    state.devicePixelRatio = ratio;
    QPainter painter(&picture);
    painter.translate(-cell.frame().topLeft());
    bar.tabStyle().drawBar(painter, cell.frame(), state);
    bar.tabStyle().drawCell(painter, cell, state);
    return picture;
}

QPixmap miniatureOfView(QWidget *view)
{
    if (!view || view->size().isEmpty())
        return {};
    QPixmap picture = view->grab();
    const int width = qRound(kMiniatureWidth * picture.devicePixelRatio());
    return picture.width() <= width ? picture : picture.scaledToWidth(width, Qt::SmoothTransformation);
}

} // namespace

PSMTabDragWindowController::PSMTabDragWindowController(runebook::TabStrip &bar, const PSMTabBarCell &cell,
                                                       const QPoint &grabOffset)
    : m_mimeData(bar.mimeDataForTabItem(cell.representedObject())), m_grabOffset(grabOffset)
{
    if (!canPlaceWindows())
        return;
    QPixmap miniature;
    if (bar.carriesMiniatures() && cell.representedObject())
        miniature = miniatureOfView(cell.representedObject()->property("view").value<QWidget *>());
    m_window = std::make_unique<PSMTabDragWindow>(pictureOfTab(bar, cell), miniature, &bar.widget());
}

PSMTabDragWindowController::~PSMTabDragWindowController() = default;

void PSMTabDragWindowController::moveTo(const QPoint &pointer)
{
    if (!m_window)
        return;
    m_window->move(pointer - m_grabOffset);
    m_window->show();
}

void PSMTabDragWindowController::hide()
{
    if (m_window)
        m_window->hide();
}
