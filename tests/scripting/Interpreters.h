#pragma once

#include <QDir>
#include <QStringList>
#include <pwd.h>
#include <unistd.h>

/// The Python interpreters of this machine, by minor version ("3.11"). They are looked for in the real home
/// of the user, because tests put HOME elsewhere.
namespace Interpreters {

/// Files named \a name in \a folder of each installation: the system's first, then those of pyenv.
inline QStringList files(const QString &folder, const QString &name)
{
    const QDir versions(QString::fromLocal8Bit(::getpwuid(::getuid())->pw_dir)
                        + QStringLiteral("/.pyenv/versions"));
    QStringList folders {QStringLiteral("/usr/") + folder};
    if (folder == QStringLiteral("lib"))
        folders = {QStringLiteral("/usr/lib/x86_64-linux-gnu"), QStringLiteral("/usr/lib/aarch64-linux-gnu")};
    for (const QString &version : versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        folders << versions.filePath(version) + u'/' + folder;
    QStringList found;
    for (const QString &place : folders) {
        for (const QString &file : QDir(place).entryList({name}, QDir::Files | QDir::NoSymLinks))
            found << place + u'/' + file;
    }
    return found;
}

/// The shared libraries of one minor version.
inline QStringList libraries(const QString &minor)
{
    return files(QStringLiteral("lib"), QStringLiteral("libpython%1.so.*").arg(minor));
}

/// The programs of one minor version.
inline QStringList programs(const QString &minor)
{
    return files(QStringLiteral("bin"), QStringLiteral("python") + minor);
}

} // namespace Interpreters

/// Leaves out a row of a test that needs a Python of the minor version \a minor.
#define SKIP_WITHOUT_PYTHON(minor)                                                                           \
    QSKIP(qPrintable(QStringLiteral("python-%1: no such interpreter on this machine").arg(minor)))
