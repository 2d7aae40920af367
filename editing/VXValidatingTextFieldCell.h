#pragma once

#include "document/VXDocument.h"

#include <QRect>

class QPainter;
class VXValidatingTextField;

/// Draws the error badge of a validating text field and says how much room it leaves for the text. No state.
/// A point is a device-independent pixel, as in all measures of widgets.
class VXValidatingTextFieldCell
{
public:
    /// The text of a badge: the system font at 11 points, white.
    runebook::FormattedText errorBadgeString(const QString &text) const;
    /// Where the badge of \a field stands, within its border at the right end; empty without an error hint.
    QRect errorBadgeRectInView(const VXValidatingTextField &field) const;
    /// Draws the badge where one is to be seen. Answers the part of \a frame that is left for the text.
    QRect drawInteriorWithFrameInView(QPainter *painter, const QRect &frame,
                                      const VXValidatingTextField &field) const;
    /// The part of \a frame in which text is edited: all but the extra button.
    QRect selectWithFrameInView(const QRect &frame, const VXValidatingTextField &field) const;
    /// The inside of the field, without its border.
    static QRect interiorOf(const VXValidatingTextField &field);

private:
    void drawBadge(QPainter &painter, const QRect &badge, const VXValidatingTextField &field) const;
};
