#include "platform/WindowPlacement.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <algorithm>

namespace runebook::WindowPlacement {

namespace {

constexpr int kLeastTitleBar = 28;

/// What the window manager puts around \a window; a guess while it was never shown.
QMargins frameOf(const QWidget &window)
{
    const QRect outer = window.frameGeometry();
    const QRect inner = window.geometry();
    if (outer != inner)
        return {inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
                outer.bottom() - inner.bottom()};
    const int side = window.style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, &window);
    return {side, qMax(kLeastTitleBar, window.style()->pixelMetric(QStyle::PM_TitleBarHeight)), side, side};
}

bool isTaken(const QPoint &place, const QList<QWidget *> &others)
{
    return std::any_of(others.begin(), others.end(), [&place](const QWidget *other) {
        return (other->pos() - place).manhattanLength() < kLeastTitleBar;
    });
}

} // namespace

void cascade(QWidget &window, const QList<QWidget *> &others)
{
    if (others.isEmpty())
        return;
    const QWidget &first = *others.front();
    const QMargins frame = frameOf(first);
    const int step = qMax(kLeastTitleBar, frame.top());
    const bool isFree = !first.isMaximized() && !first.isFullScreen();
    const QSize size = isFree ? first.size() : first.normalGeometry().size();
    const QRect room = first.screen() ? first.screen()->availableGeometry() : QRect();
    const QSize reach = room.size() - size.grownBy(frame); // of the top left corner
    const int columns = qMax(0, reach.width()) / step + 1;
    const int rows = qMax(0, reach.height()) / step + 1;
    const QPoint start = isFree ? (first.pos() - room.topLeft()) / step : QPoint(-1, -1);
    QPoint place;
    // Diagonally as far as that meets free places, then wherever there is one.
    for (int i = 1; i <= columns * rows * 2; ++i) {
        const QPoint cell = i <= columns * rows ? QPoint((start.x() + i) % columns, (start.y() + i) % rows)
                                                : QPoint(i % columns, i / columns % rows);
        place = room.topLeft() + cell * step;
        if (!isTaken(place, others))
            break;
    }
    window.resize(size);
    window.move(place);
}

void takePlaceOf(QWidget &window, const QWidget &former)
{
    const bool isFree = !former.isMaximized() && !former.isFullScreen();
    const QRect place = isFree ? QRect(former.pos(), former.size()) : former.normalGeometry();
    window.resize(place.size());
    window.move(place.topLeft());
    window.setWindowState(former.windowState());
}

void fitIntoScreen(QWidget &window)
{
    const QScreen *screen = window.screen();
    if (!screen || window.isMaximized() || window.isFullScreen())
        return;
    const QRect room = screen->availableGeometry();
    const QMargins frame = frameOf(window);
    const QSize most = room.marginsRemoved(frame).size();
    if (!window.testAttribute(Qt::WA_Moved) && window.size() == window.size().boundedTo(most))
        return; // the window manager finds a place
    window.resize(window.size().boundedTo(most));
    const QSize outer = window.size().grownBy(frame);
    const QPoint corner = room.bottomRight() + QPoint(1, 1) - QPoint(outer.width(), outer.height());
    window.move(std::clamp(window.x(), room.left(), qMax(room.left(), corner.x())),
                std::clamp(window.y(), room.top(), qMax(room.top(), corner.y())));
}

} // namespace runebook::WindowPlacement
