#pragma once

#include <QString>

/// Programs that the desktop knows by their desktop file.
namespace runebook::DesktopApplication {

/// The path of the desktop file with that id ("org.gnome.Characters"), or empty.
QString desktopFile(const QString &id);

/// Starts an application that shows characters, for one code point: the one with \a preferredId, or, when
/// that is empty, the first of the usual ones that is installed. False when there is none.
bool showCharacter(const QString &preferredId, quint32 codePoint);

} // namespace runebook::DesktopApplication
