#pragma once

#include <QCoreApplication>
#include <QPixmap>
#include <QScreen>
#include <QWidget>

namespace runebook {

/// What the screen shows of \a widget, which is in a shown window: nothing is painted for the picture.
inline QImage onScreen(const QWidget &widget)
{
    QCoreApplication::processEvents();
    const QRect part(widget.mapTo(widget.window(), QPoint()), widget.size());
    return widget.screen()
        ->grabWindow(widget.window()->winId(), part.x(), part.y(), part.width(), part.height())
        .toImage();
}

} // namespace runebook
