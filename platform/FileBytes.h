#pragma once

#include <QByteArray>
#include <QFile>
#include <optional>

namespace runebook {

/// The bytes that the open \a file has now, from its start; those of a large one are read by several threads
/// at the same time. Fewer when the file becomes shorter meanwhile. Nothing, and \a reason, when reading
/// fails.
std::optional<QByteArray> bytesOfFile(const QFile &file, QString *reason);

/// Whether \a bytes are UTF-8 as a whole.
bool isUtf8(const QByteArray &bytes);

} // namespace runebook
