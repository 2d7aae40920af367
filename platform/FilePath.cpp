#include "platform/FilePath.h"

#include <QDir>
#include <QFileInfo>
#include <QStringDecoder>
#include <QUrl>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t kFirstByte = 0xDC80;
constexpr char16_t kLastByte = 0xDCFF;

/// Whether the unit stands for a byte: no second half of a pair.
bool isByte(QStringView text, qsizetype place)
{
    const char16_t unit = text[place].unicode();
    return unit >= kFirstByte && unit <= kLastByte && (place == 0 || !text[place - 1].isHighSurrogate());
}

bool hasBytes(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isByte(text, i))
            return true;
    }
    return false;
}

/// The length of the character at the start of \a bytes; 0 when there is none.
qsizetype characterLength(QByteArrayView bytes)
{
    for (qsizetype length = 1; length <= qMin<qsizetype>(4, bytes.size()); ++length) {
        if (QUtf8StringView(bytes.first(length)).isValidUtf8())
            return length;
    }
    return 0;
}

/// The same path from the root, without "." and "..".
QString cleanPath(const QString &path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

} // namespace

QString pathFromURL(const QString &url)
{
    if (!url.startsWith("file:"_L1))
        return url;
    const QUrl parsed(url);
    if (!parsed.host().isEmpty())
        return parsed.toLocalFile();
    return pathFromNative(QByteArray::fromPercentEncoding(parsed.path(QUrl::FullyEncoded).toLatin1()));
}

QByteArray nativePath(const QString &path)
{
    if (!hasBytes(path))
        return path.toUtf8();
    QByteArray bytes;
    qsizetype start = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (!isByte(path, i))
            continue;
        bytes += QStringView(path).mid(start, i - start).toUtf8();
        bytes += static_cast<char>(path[i].unicode() - kFirstByte + 0x80);
        start = i + 1;
    }
    return bytes + QStringView(path).mid(start).toUtf8();
}

QString pathFromNative(QByteArrayView bytes)
{
    if (QUtf8StringView(bytes).isValidUtf8())
        return QString::fromUtf8(bytes);
    QString path;
    for (qsizetype place = 0; place < bytes.size();) {
        const qsizetype length = characterLength(bytes.sliced(place));
        if (length > 0)
            path += QString::fromUtf8(bytes.sliced(place, length));
        else
            path += QChar(static_cast<char16_t>(kFirstByte + static_cast<uchar>(bytes[place]) - 0x80));
        place += qMax<qsizetype>(length, 1);
    }
    return path;
}

QString portablePath(const QString &path)
{
    return hasBytes(path) ? "file://"_L1 + QString::fromLatin1(nativePath(path).toPercentEncoding("/"))
                          : path;
}

QString shownPath(const QString &path)
{
    QString shown = path;
    for (qsizetype i = 0; i < shown.size(); ++i) {
        if (isByte(path, i))
            shown[i] = QChar::ReplacementCharacter;
    }
    return shown;
}

FileKind fileKind(const QString &path)
{
    struct stat status = {};
    if (path.isEmpty() || ::stat(nativePath(path).constData(), &status) != 0)
        return FileKind::None;
    return S_ISREG(status.st_mode) ? FileKind::Regular
        : S_ISDIR(status.st_mode)  ? FileKind::Folder
                                   : FileKind::Other;
}

bool isOddity(const QString &path)
{
    struct stat status = {};
    return ::lstat(nativePath(path).constData(), &status) == 0 && !S_ISREG(status.st_mode);
}

QString canonicalPath(const QString &path)
{
    const std::unique_ptr<char, void (*)(void *)> resolved(
        path.isEmpty() ? nullptr : ::realpath(nativePath(path).constData(), nullptr), &std::free);
    return resolved ? pathFromNative(resolved.get()) : QString();
}

bool isSameFile(const QString &path, const QString &other)
{
    const QString canonical = canonicalPath(path);
    return cleanPath(path) == cleanPath(other) || (!canonical.isEmpty() && canonical == canonicalPath(other));
}

bool removeFile(const QString &path)
{
    return ::unlink(nativePath(path).constData()) == 0 || errno == ENOENT;
}

} // namespace runebook
