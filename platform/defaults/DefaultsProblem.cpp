#include "platform/defaults/DefaultsProblem.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMaxKept = 100;

DefaultsProblem &firstProblem()
{
    static DefaultsProblem problem;
    return problem;
}

/// Moves the file to a name that is free; empty when it cannot be moved.
QString movedAside(const QString &path)
{
    for (int number = 1; number <= kMaxKept; ++number) {
        const QString target = path + ".damaged"_L1 + (number == 1 ? QString() : QString::number(number));
        if (!QFileInfo::exists(target))
            return QFile::rename(path, target) ? target : QString();
    }
    return {};
}

/// Whether most lines of the file are none of settings. The settings' own reader passes over such lines: a
/// stray one is no reason to begin anew, a file of something else is.
bool isSomethingElse(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray content = file.readAll();
    int strange = 0;
    int known = 0;
    for (const QByteArray &line : content.split('\n')) {
        const QByteArray text = line.trimmed();
        if (text.isEmpty())
            continue;
        const bool isKnown = text.contains('=') || text.startsWith('[') || text.startsWith(';');
        ++(isKnown ? known : strange);
    }
    return content.contains('\0') || strange > known;
}

bool isDamaged(const QString &path)
{
    constexpr qint64 kLargest = 64 << 20; // settings are a few kilobytes
    return QFileInfo(path).size() > kLargest
        || QSettings(path, QSettings::IniFormat).status() == QSettings::FormatError || isSomethingElse(path);
}

} // namespace

void setDamagedDefaultsAside(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists())
        return;
    const bool isReadable = file.isFile() && file.isReadable();
    if (isReadable && !isDamaged(path))
        return;
    const DefaultsProblem problem {true, path, isReadable ? movedAside(path) : QString()};
    if (!firstProblem().isThere)
        firstProblem() = problem;
}

DefaultsProblem takeDefaultsProblem()
{
    return std::exchange(firstProblem(), {});
}

} // namespace runebook
