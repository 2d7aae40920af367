#pragma once

#include <QByteArrayView>
#include <QString>

namespace runebook {

// Names of files are bytes, and not all of them are UTF-8. Texts keep each byte that is none as U+DC80 to
// U+DCFF, as scripts know it from os.fsdecode(). The framework's own file classes see nothing at such a path:
// whatever touches files that users name asks here.

/// The path that \a url stands for: documents and scripts name files by path or by "file:" URL alike.
QString pathFromURL(const QString &url);
/// The bytes by which the system knows \a path.
QByteArray nativePath(const QString &path);
/// The other way.
QString pathFromNative(QByteArrayView bytes);
/// The path as plain UTF-8 can keep it, for notes and messages to other processes: itself or a "file:" URL;
/// pathFromURL() takes both.
QString portablePath(const QString &path);
/// The path as it can be shown or be part of another name.
QString shownPath(const QString &path);

enum class FileKind { None, Regular, Folder, Other };
/// What \a path leads to, links followed.
FileKind fileKind(const QString &path);
/// Whether something else than a plain file lies at \a path itself, a link among it: what the program makes
/// there by itself is none of these.
bool isOddity(const QString &path);
/// The path without links; empty when nothing is there.
QString canonicalPath(const QString &path);
/// Whether both paths lead to one file, there or not.
bool isSameFile(const QString &path, const QString &other);
/// Takes the name away; true when it is gone.
bool removeFile(const QString &path);

} // namespace runebook
