#include "platform/RescueFiles.h"

#include "platform/FilePath.h"
#include "platform/FileState.h"
#include "platform/StandardFolders.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QUuid>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace runebook::RescueFiles {

using namespace Qt::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("RescueFiles", text);
}

constexpr auto kSuffix = ".runebook-rescue"_L1;
constexpr auto kUnfinished = ".part"_L1;
constexpr auto kNote = ".saving"_L1;
constexpr int kAttempts = 100;

QString shortHash(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha1).toHex().left(10));
}

/// The name of the file, cut so that something can be put before and behind it.
QString boundedName(const QString &name)
{
    constexpr qsizetype kLongest = 190; // bytes, of 255
    if (QFile::encodeName(name).size() <= kLongest)
        return name;
    QString cut = name.left(kLongest);
    while (QFile::encodeName(cut).size() > kLongest)
        cut.chop(1);
    return cut + u'-' + shortHash(name);
}

QString ownFolder()
{
    const QString own = StandardFolders::userData();
    return !own.isEmpty() && QDir(own).mkpath(u"Rescue"_s) ? own + "/Rescue"_L1 : QString();
}

QString placeBeside(const QString &target)
{
    const QFileInfo info(target);
    return info.dir().filePath(u'.' + boundedName(info.fileName()) + kSuffix);
}

/// Files of one name in several folders have different ones here.
QString placeInOwnFolder(const QString &target)
{
    const QString folder = ownFolder();
    const QFileInfo info(target);
    return folder.isEmpty()
        ? QString()
        : folder + u'/' + boundedName(info.fileName()) + u'-' + shortHash(info.absoluteFilePath()) + kSuffix;
}

QStringList inOwnFolder(const QString &pattern)
{
    const QString folder = ownFolder();
    QStringList paths;
    if (!folder.isEmpty()) {
        for (const QString &name : QDir(folder).entryList({pattern}, QDir::Files | QDir::Hidden))
            paths << folder + u'/' + name;
    }
    return paths;
}

Place createAt(const QString &place, mode_t mode)
{
    Place made;
    made.failure = EEXIST;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        made.name = attempt ? place + u'-' + QString::number(attempt) : place;
        if (QFileInfo::exists(made.name))
            continue;
        auto file = std::make_unique<CheckedFile>(made.name + kUnfinished, O_RDWR | O_CREAT | O_EXCL, mode);
        made.failure = file->failure();
        if (file->isOpen() && file->lock()) {
            made.file = std::move(file);
            return made;
        }
        if (made.failure && made.failure != EEXIST)
            break;
    }
    return made;
}

/// Whether a save is still busy with that file.
bool isInUse(const QString &path)
{
    CheckedFile file(path, O_RDONLY);
    return file.isOpen() && !file.lock();
}

struct Note {
    QString path;
    QString target;
    QString rescue;
};

QList<Note> allNotes()
{
    QList<Note> notes;
    for (const QString &path : inOwnFolder(u'*' + kNote)) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QJsonObject object = QJsonDocument::fromJson(file.read(1 << 16)).object();
        notes << Note {file.fileName(), object.value("target"_L1).toString(),
                       object.value("rescue"_L1).toString()};
    }
    return notes;
}

/// The rescue files of one place, whole and not in use. Unfinished ones that nobody works on hold nothing
/// that is not in the old file or an autosave as well; they go.
QStringList leftAt(const QString &place)
{
    QStringList found;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const QString name = attempt ? place + u'-' + QString::number(attempt) : place;
        const QString unfinished = name + kUnfinished;
        if (QFileInfo::exists(unfinished) && !isInUse(unfinished))
            QFile::remove(unfinished);
        if (!QFileInfo::exists(name)) {
            if (attempt > 1)
                break;
            continue;
        }
        if (QFileInfo(name).isFile() && !isInUse(name))
            found << name;
    }
    return found;
}

} // namespace

Place create(const QString &target)
{
    constexpr mode_t kPrivate = 0600;
    Place made = createAt(placeBeside(target), kPrivate);
    const QString own = made.file ? QString() : placeInOwnFolder(target);
    return own.isEmpty() ? std::move(made) : createAt(own, kPrivate);
}

Place createInFolderOf(const QString &target)
{
    constexpr mode_t kUsual = 0666; // less the user's mask
    return createAt(placeBeside(target), kUsual);
}

QString note(const QString &target, const QString &rescue)
{
    const QString folder = ownFolder();
    if (folder.isEmpty())
        return {};
    QFile file(folder + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + kNote);
    const QJsonObject object {{u"target"_s, target}, {u"rescue"_s, rescue}};
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(object).toJson()) < 0)
        return {};
    return file.fileName();
}

QList<Found> leftFor(const QString &target)
{
    const QString canonical = QFileInfo(target).canonicalFilePath();
    const QString path = canonical.isEmpty() ? QFileInfo(target).absoluteFilePath() : canonical;
    QStringList places {placeBeside(path)};
    if (const QString own = placeInOwnFolder(path); !own.isEmpty())
        places << own;
    QList<Found> found;
    for (const QString &place : std::as_const(places)) {
        for (const QString &rescue : leftAt(place))
            found << Found {rescue, path};
    }
    return found;
}

bool areMet(const QStringList &files, Error *error)
{
    for (const QString &file : files) {
        const QFileInfo info(pathFromURL(file));
        const QString canonical = info.canonicalFilePath();
        const QString target = canonical.isEmpty() ? info.absoluteFilePath() : canonical;
        QStringList places {placeBeside(target)};
        if (const QString data = StandardFolders::userData(); QFileInfo(data + "/Rescue"_L1).isDir())
            places << placeInOwnFolder(target);
        for (const QString &place : std::as_const(places)) {
            for (int attempt = 0; attempt < kAttempts; ++attempt) {
                const QString rescue = attempt ? place + u'-' + QString::number(attempt) : place;
                const bool isThere = QFileInfo(rescue).isFile();
                if (!isThere && attempt > 1)
                    break;
                if (!isThere || isInUse(rescue) || haveSameContent(rescue, target))
                    continue;
                fail(error,
                     {u"RescueError"_s, 1,
                      tr("A save of “%1” did not end; its whole text lies in “%2”.").arg(file, rescue),
                      {},
                      tr("Open the file in a window to restore or discard it, or go on with "
                         "--ignore-rescue.")});
                return true;
            }
        }
    }
    return false;
}

QList<Found> leftForAny()
{
    QList<Found> found;
    QSet<QString> known;
    for (const Note &note : allNotes()) {
        const QString unfinished = note.rescue + kUnfinished;
        if (QFileInfo::exists(unfinished)) {
            if (isInUse(unfinished))
                continue;
            QFile::remove(unfinished);
        }
        if (!QFileInfo(note.rescue).isFile()) {
            QFile::remove(note.path);
        } else if (!isInUse(note.rescue) && !known.contains(note.rescue)) {
            known << note.rescue;
            found << Found {note.rescue, note.target};
        }
    }
    for (const QString &path : inOwnFolder(u'*' + kSuffix + u'*')) {
        if (known.contains(path) || isInUse(path))
            continue;
        if (path.endsWith(kUnfinished))
            QFile::remove(path);
        else
            found << Found {path, {}};
    }
    return found;
}

bool remove(const QString &path)
{
    const bool isRemoved = ::unlink(QFile::encodeName(path).constData()) == 0 || errno == ENOENT;
    for (const Note &note : isRemoved ? allNotes() : QList<Note>()) {
        if (note.rescue == path)
            QFile::remove(note.path);
    }
    return isRemoved;
}

} // namespace runebook::RescueFiles
