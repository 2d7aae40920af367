#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace runebook {

/// The bytes of the file at \a path; words that no file has where it cannot be read.
inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

/// Puts a file of \a bytes there, with the folders that it needs, and gives its path back.
inline QString write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(bytes) != bytes.size())
        QTest::qFail(qPrintable(QStringLiteral("cannot write ") + path), __FILE__, __LINE__);
    return path;
}

} // namespace runebook
