#pragma once

#include "scripting/panel/ConsoleText.h"

#include <QPoint>
#include <QRectF>
#include <QTextBlock>
#include <functional>
#include <optional>

class QPlainTextEdit;

namespace runebook {

/// The links of a console: under the mouse and at the caret. A link that was dragged over is text being
/// selected.
class ConsoleLinks
{
public:
    /// Where a block stands in the viewport.
    using PlaceOf = std::function<QRectF(const QTextBlock &block)>;
    /// \a view must live as long.
    ConsoleLinks(QPlainTextEdit *view, PlaceOf placeOf) : m_view(view), m_placeOf(std::move(placeOf)) { }

    /// The one whose text lies under \a position, in the viewport.
    std::optional<FileLink> at(const QPoint &position) const;
    std::optional<FileLink> atCaret() const;
    enum class Way { Forward, Backward };
    /// Moves to the next link and selects it; false when there is none.
    bool select(Way way);

    /// The mouse button went down at \a position, or up: then the link that was clicked, if any.
    void press(const QPoint &position) { m_pressed = at(position); }
    void forgetPress() { m_pressed.reset(); }
    std::optional<FileLink> release(const QPoint &position);

private:
    QPlainTextEdit *m_view;
    PlaceOf m_placeOf;
    std::optional<FileLink> m_pressed;
};

} // namespace runebook
