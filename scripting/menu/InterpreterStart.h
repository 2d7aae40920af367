#pragma once

#include <QStringList>
#include <functional>

/// Starts the interpreter whose functions are loaded, and makes it the program's: with its own output
/// streams, the modules of the bridge, and the folders of scripts in its search path.
namespace runebook::InterpreterStart {

/// An open library, never to be closed; null when there is none at \a path.
void *openLibrary(const QString &path);

struct Version {
    int major = -1;
    int minor = -1;
};

/// Whether what scripts write goes to the program's console or to the process's own output.
enum class Streams { Kept, Replaced };
/// The folders in which an interpreter of that version finds scripts; called once it is up.
using FoldersFor = std::function<QStringList(Version version)>;

/// \a prefix is the interpreter's home. Afterwards the calling thread does not hold the interpreter's lock.
void start(const QString &prefix, Streams streams, const FoldersFor &foldersFor);

} // namespace runebook::InterpreterStart
