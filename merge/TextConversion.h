#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QIODevice>

namespace runebook {

/// Writes a glyph data file for programs that compare lines: the key of each record, and below it one field a
/// line. What is no record stands as it is, so that no change is hidden; so do files that hold no records.
/// False when \a out refuses.
bool writeTextConversion(const QByteArray &bytes, QIODevice &out);
/// The same with the file \a path; false and an error when it cannot be opened.
[[nodiscard]] bool convertFileToText(const QString &path, QIODevice &out, Error *error);

} // namespace runebook
