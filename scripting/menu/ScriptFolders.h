#pragma once

#include <QStringList>

/// The folders in which scripts and what belongs to them are kept.
namespace runebook::ScriptFolders {

/// The program's folder in the user's application support, or in the temporary directory.
QString applicationSupportFolder();
/// The user's application support with applicationSupportFolder() once more below it.
QString applicationSupportPath();
/// The folder for scripts that users are shown.
QString shown();
/// When shown() exists and the one that is searched does not, makes the latter a link to the former.
void link();
/// The folders that hold scripts for Python \a major . \a minor, the program's own among them, as they are
/// now; those of the user are linked first.
QStringList present(int major, int minor);

} // namespace runebook::ScriptFolders
