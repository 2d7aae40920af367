#pragma once

#include <QFile>
#include <QStringList>
#include <sys/stat.h>
#include <sys/sysmacros.h>

/// Things that are no plain files, for tests of what the program does when it finds them where it keeps its
/// own.

/// Makes a device at \a path that is always full, as a stand-in for the machine's own: a test that goes wrong
/// as root spoils nothing but its folder. False where this user may make none.
inline bool makeDevice(const QString &path)
{
    constexpr unsigned kMemory = 1;
    constexpr unsigned kFull = 7;
    return ::mknod(QFile::encodeName(path).constData(), S_IFCHR | 0600, ::makedev(kMemory, kFull)) == 0;
}

/// Makes a "pipe", a "device", a "folder", or a "link" to another plain file at \a path.
inline bool makeOddity(const QString &kind, const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    if (kind == QStringLiteral("pipe"))
        return ::mkfifo(native.constData(), 0600) == 0;
    if (kind == QStringLiteral("device"))
        return makeDevice(path);
    if (kind == QStringLiteral("folder"))
        return ::mkdir(native.constData(), 0700) == 0;
    return QFile::link(QStringLiteral("elsewhere"), path);
}

/// What lies at \a path, links not followed: type and number.
inline std::pair<mode_t, ino_t> whatIsAt(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0
        ? std::pair(status.st_mode & S_IFMT, status.st_ino)
        : std::pair(mode_t(0), ino_t(0));
}
