#pragma once

#include "document/GlyphPreview.h"
#include "editing/fields/BadgedField.h"

#include <QObject>
#include <QRect>

class QPainter;

/// Draws the error badge of a validating text field and says how much room it leaves for the text. No state.
/// A point is a device-independent pixel, as in all measures of widgets.
class VXValidatingTextFieldCell : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXValidatingTextFieldCell(QObject *parent = nullptr) : QObject(parent) { }

    /// The text of a badge: the system font at 11 points, white.
    runebook::FormattedText errorBadgeString(const QString &text) const;
    /// Where the badge of \a field stands, within its border at the right end; empty without an error hint.
    QRect errorBadgeRectInView(const runebook::BadgedField &field) const;
    /// Draws the badge where one is to be seen. Answers the part of \a frame that is left for the text.
    QRect drawInteriorWithFrameInView(QPainter *painter, const QRect &frame,
                                      const runebook::BadgedField &field) const;
    /// The part of \a frame in which text is edited: all but the extra button.
    QRect selectWithFrameInView(const QRect &frame, const runebook::BadgedField &field) const;

public: // the same for scripts: a badge as a map of "string", "font", "size" in points and "color";
        // rectangles as lists of x, y, width and height, empty for any object but a field
    Q_INVOKABLE QVariantMap errorBadgeString(QVariant text) const;
    Q_INVOKABLE QVariantList errorBadgeRectInView(QObject *field) const;
    Q_INVOKABLE QVariantList drawInteriorWithFrameInView(const QVariantList &frame, QObject *field) const;
    Q_INVOKABLE QVariantList selectWithFrameInView(const QVariantList &frame, QObject *field) const;

    /// Whether there is room for the whole badge beside the whole text of the field; without it the badge is
    /// a sign, and the reason has to stand elsewhere.
    static bool isBadgeWhole(const runebook::BadgedField &field);

private:
    static int wantedBadgeWidth(const runebook::BadgedField &field);
    void drawBadge(QPainter &painter, const QRect &badge, const runebook::BadgedField &field) const;
};
