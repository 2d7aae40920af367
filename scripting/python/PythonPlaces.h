#pragma once

#include <QString>
#include <QStringList>

namespace runebook {

/// Where installations of Python are looked for. Both roots can lead into a tree that a test has built.
struct PythonPlaces {
    QString root; ///< stands in front of every absolute place; empty for the machine itself
    QString home; ///< the user's home folder, as it stands
    QString pluginFramework; ///< a framework that a plugin brings; empty for none

    /// The places of this machine and user.
    static PythonPlaces ofThisMachine();

public: // where to look
    /// Frameworks and folders that hold some, in the order in which they are searched.
    QStringList frameworks() const;
    /// Folders that may hold a shared library of Python; only those that are there.
    QStringList libraryFolders() const;

public: // what a found path tells
    /// The word for where a framework comes from ("Homebrew", ...).
    QString frameworkLabel(const QString &path) const;
    /// The word for where a shared library comes from ("pyenv", ...).
    QString libraryLabel(const QString &path) const;
    /// The path without the root in front of it.
    QString withoutRoot(const QString &path) const;
};

/// True for the path of a shared library of Python by its name alone: "libpython3.11.so.1.0".
bool isPythonLibraryName(const QString &path);
/// The version in such a name, "3.11"; empty for other paths and for other major versions than 3.
QString versionInLibraryName(const QString &path);
/// The folder that holds the installation of a library or framework version: what PYTHONHOME names.
QString pythonPrefix(const QString &path);
/// The version of the installation that a shared library belongs to, without running it: the name of its
/// folder, its header "patchlevel.h", or the "3.N" of the library's name.
QString installedVersion(const QString &libraryPath);

} // namespace runebook
