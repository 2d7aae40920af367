#pragma once

#include <QString>
#include <optional>

class QJsonObject;

namespace runebook {

/// What the file system tells of a file without reading it: equal states mean that nobody has written to it
/// or put another in its place.
struct FileState {
    bool exists = false;
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0; ///< bytes
    qint64 modifiedNs = 0; ///< since 1970
    qint64 changedNs = 0; ///< of content or attributes; no program sets this one back

    /// The state of the file that \a path leads to, links followed.
    static FileState of(const QString &path);
    /// The state of an open file.
    static FileState of(int descriptor);
    QJsonObject toJson() const;
    static FileState fromJson(const QJsonObject &object);
    bool operator==(const FileState &other) const = default;
};

/// A number made of all bytes of a regular file, the same for the same bytes on every machine; nothing when
/// it cannot be read. No protection against somebody who means to deceive. Any thread.
std::optional<quint64> contentHash(const QString &path);

/// Whether two regular files hold the same bytes.
bool haveSameContent(const QString &path, const QString &other);

} // namespace runebook
