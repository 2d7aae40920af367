#pragma once

#include <QString>

namespace runebook {

/// The whole of the process that RunWatch starts: a window that names the script \a name, which has run \a
/// since and holds the program that is this process's parent. "Wait" ends this process only; "End and Reopen"
/// kills the parent and puts a new program in this one's place, which opens \a sessionFile. Answers the exit
/// status.
int showRunWatchWindow(const QString &sessionFile, const QString &name, const QString &since);

} // namespace runebook
