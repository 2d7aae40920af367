#pragma once

#include <QColor>
#include <QPalette>

namespace runebook {

/// The colours of code, as they are defined and as they can be read on a given background.

/// Keywords, the scripting objects, built-ins; fixed colours of strings and numbers. Components are single
/// precision, as given.
QColor keywordColor();
QColor scriptingObjectColor();
QColor builtinColor();
QColor quotedStringColor();
QColor numberColor();

/// Labels of second and third rank: the text colour of \a palette blended into its base. The second rank
/// keeps a contrast of at least 4.5 : 1; the third is for marks that are not meant to be read.
QColor secondaryLabelColor(const QPalette &palette);
QColor tertiaryLabelColor(const QPalette &palette);

/// The contrast ratio of two opaque colours, 1 to 21, by the relative luminance of the accessibility
/// guidelines.
double contrastRatio(const QColor &a, const QColor &b);

/// \a color itself when it can be read on \a background (4.5 : 1), else the nearest colour of the same hue
/// and saturation that can: darker on a light background, lighter on a dark one.
QColor readableColor(const QColor &color, const QColor &background);

} // namespace runebook
