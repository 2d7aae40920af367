#pragma once

#include <QString>
#include <QStringList>

/// Where the program's own files and the user's lie.
namespace runebook::StandardFolders {

/// The program's data folder: share/runebook beside the folder of the executable, in the build tree as in an
/// installation.
QString programData();
/// The path of a file that ships with the program.
QString resource(const QString &name);
/// Application Support directories: the user's first (XDG_DATA_HOME), then those of all users
/// (XDG_DATA_DIRS); absolute, none twice.
QStringList applicationSupport();
/// The folder of the program within the user's application support, made when missing; empty when it cannot
/// be made.
QString userData();

/// For programs that do not lie beside the data folder, such as tests.
void setProgramData(const QString &path);

} // namespace runebook::StandardFolders
