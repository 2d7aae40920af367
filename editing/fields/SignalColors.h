#pragma once

#include <QColor>
#include <QPalette>

/// The few colours of editing that mean something, each for light and dark palettes.
namespace runebook::SignalColors {

bool isDark(const QPalette &palette);
/// The fill behind the white text of an error; the contrast is at least 4.5 to 1.
QColor error(const QPalette &palette);
/// The text colour of a warning on the window's own background.
QColor warningText(const QPalette &palette);
/// Behind text that goes, and behind text that comes.
QColor removed(const QPalette &palette);
QColor inserted(const QPalette &palette);

} // namespace runebook::SignalColors
