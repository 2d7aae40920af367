#pragma once

#include "platform/Error.h"

#include <QString>
#include <optional>

/// The text of a script in a file, as a tab of the macro panel shows and writes it.
namespace runebook::ScriptText {

/// Larger files are no scripts, in bytes.
inline constexpr qint64 kLargest = 4 << 20;

/// The text of the file at \a path. Nothing, and an error that tells why, for what is no plain file, too
/// large, or not UTF-8.
std::optional<QString> read(const QString &path, Error *error = nullptr);
/// Writes \a text in place, UTF-8; the old or the new text always lies whole on the disk.
[[nodiscard]] bool write(const QString &path, const QString &text, Error *error = nullptr);
/// \a code with a line that declares \a title for the Scripts menu, in front, unless one of its own does.
QString withMenuTitle(const QString &code, const QString &title);
/// A name for a file of the title \a title: what no file system likes is left out.
QString fileNameFor(const QString &title);

} // namespace runebook::ScriptText
