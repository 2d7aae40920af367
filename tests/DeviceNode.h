#pragma once

#include <QFile>
#include <sys/stat.h>
#include <sys/sysmacros.h>

/// Makes a device at \a path that is always full, as a stand-in for the machine's own: a test that goes wrong
/// as root spoils nothing but its folder. False where this user may make none.
inline bool makeDevice(const QString &path)
{
    constexpr unsigned kMemory = 1;
    constexpr unsigned kFull = 7;
    return ::mknod(QFile::encodeName(path).constData(), S_IFCHR | 0600, ::makedev(kMemory, kFull)) == 0;
}
