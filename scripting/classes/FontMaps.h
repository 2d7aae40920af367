#pragma once

#include <QFont>
#include <QVariantMap>

namespace runebook::bridge {

/// A font as scripts see it: a map of "name" (its family), "size" in points, "bold" and "italic".
QVariantMap mapOfFont(const QFont &font);
QFont fontOfMap(const QVariantMap &map);
/// \a value with fonts and colours in the place of what scripts write for them, under the names that
/// attributes of texts and settings of the editor have ("NSFont", "NSColor", "VXForegroundColor..."); maps in
/// it as well.
QVariant withFontsAndColors(const QString &name, const QVariant &value);
/// Lets fonts cross as maps wherever the program hands one out or takes one.
void registerFonts();

} // namespace runebook::bridge
