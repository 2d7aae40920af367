#pragma once

#include <QString>
#include <QStringList>

/// Programs that the desktop knows by their desktop file.
namespace runebook::DesktopApplication {

/// The path of the desktop file with that id ("org.gnome.Characters"), or empty.
QString desktopFile(const QString &id);

/// The command in a desktop file as its words, without the places for files and the like; nothing when it has
/// none, or is none.
QStringList commandOf(const QString &desktopFile);

/// The path of the desktop file of what the desktop opens files of the media type \a type with, or empty.
QString defaultFor(const QString &type);

/// Starts an application that shows characters, for one code point: the one with \a preferredId, or, when
/// that is empty, the first of the usual ones that is installed. False when there is none.
bool showCharacter(const QString &preferredId, quint32 codePoint);

} // namespace runebook::DesktopApplication
