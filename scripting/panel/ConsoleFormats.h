#pragma once

#include "scripting/panel/ConsoleText.h"

#include <QTextCharFormat>
#include <QVariantMap>
#include <optional>

class QPalette;
class QWidget;

/// How marked text looks in the console, and what it says about itself.
namespace runebook::console {

/// Names of errors: bold, in the system's red as it can be read on the palette's base.
QTextCharFormat emphasisFormat(const QFont &bold, const QPalette &palette);
QTextCharFormat linkFormat(const FileLink &link, const QPalette &palette);
bool isEmphasis(const QTextCharFormat &format);
/// Path and line of a link, without its range; nothing for other text.
std::optional<FileLink> linkOf(const QTextCharFormat &format);
/// "NSFont", "NSColor", "NSLink" and "NSToolTip" of text in a view that has \a format; text without a format
/// of its own has the view's font and text colour.
QVariantMap attributesOf(const QTextCharFormat &format, const QWidget &view);

} // namespace runebook::console
