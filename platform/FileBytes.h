#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace runebook {

class CheckedFile;

/// The bytes that the open \a file has now, from its start; those of a large one are read by several threads
/// at the same time. Fewer when the file becomes shorter meanwhile. Nothing, and \a reason, when reading
/// fails.
std::optional<QByteArray> bytesOfFile(const CheckedFile &file, QString *reason);

enum class Links { Refuse, Follow };
/// The bytes of a small file that the program looks for by itself. Nothing when it cannot be read, is larger
/// than \a limit, or is anything but a plain file, which is told: opening neither waits for a pipe nor wakes
/// a device.
std::optional<QByteArray> bytesOfSmallFile(const QString &path, qint64 limit, Links links = Links::Follow);

/// Tells on the standard error output, once for each path, that the program leaves alone what lies there.
void tellPassedOver(const QString &path, const char *why);

/// Whether \a bytes are UTF-8 as a whole.
bool isUtf8(const QByteArray &bytes);

} // namespace runebook
