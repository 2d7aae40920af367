#include "platform/documents/RescueFiles.h"

#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/StandardFolders.h"
#include "platform/documents/FileState.h"

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

namespace runebook::RescueFiles {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(RescueFiles)
};

constexpr auto kSuffix = ".runebook-rescue"_L1;
constexpr auto kUnfinished = ".part"_L1;
constexpr auto kNote = ".saving"_L1;
constexpr int kAttempts = 100;
constexpr qint64 kLongestNote = 1 << 16;

QString shortHash(const QString &path)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(nativePath(path), QCryptographicHash::Sha1).toHex().left(10));
}

/// The name of the file, cut so that something can be put before and behind it.
QString boundedName(const QString &name)
{
    constexpr qsizetype kLongest = 190; // bytes, of 255
    if (nativePath(name).size() <= kLongest)
        return name;
    QString cut = name.left(kLongest);
    while (nativePath(cut).size() > kLongest)
        cut.chop(1);
    return cut + u'-' + shortHash(name);
}

/// The path without links, or as it is where nothing is there yet.
QString canonicalOr(const QString &path)
{
    const QString canonical = canonicalPath(path);
    return canonical.isEmpty() ? QFileInfo(path).absoluteFilePath() : canonical;
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
    return folder.isEmpty() ? QString()
                            : folder + u'/' + boundedName(shownPath(info.fileName())) + u'-'
            + shortHash(info.absoluteFilePath()) + kSuffix;
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
        if (fileKind(made.name) != FileKind::None)
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
    CheckedFile file(path, O_RDONLY | O_NOFOLLOW);
    return file.isOpen() && !file.lock();
}

struct Note {
    QString path;
    QString target;
    QString rescue;
};

/// Whether \a path is \a place, or that with a number behind it as createAt() makes them.
bool isAtPlace(const QString &path, const QString &place)
{
    if (place.isEmpty() || !path.startsWith(place))
        return false;
    const QStringView rest = QStringView(path).mid(place.size());
    bool isNumber = false;
    const int number = rest.startsWith(u'-') ? rest.mid(1).toInt(&isNumber) : 0;
    return rest.isEmpty()
        || (isNumber && number > 0 && number < kAttempts && rest == u'-' + QString::number(number));
}

/// Anybody can lay a file among the notes: one that names other places than a save makes is none, or the
/// program would offer, and take away, whatever it says.
bool isOurs(const Note &note)
{
    return QDir::isAbsolutePath(note.target) && QDir::cleanPath(note.target) == note.target
        && (isAtPlace(note.rescue, placeBeside(note.target))
            || isAtPlace(note.rescue, placeInOwnFolder(note.target)));
}

QList<Note> allNotes()
{
    QList<Note> notes;
    for (const QString &path : inOwnFolder(u'*' + kNote)) {
        const std::optional<QByteArray> json = bytesOfSmallFile(path, kLongestNote, Links::Refuse);
        if (!json)
            continue;
        const QJsonObject object = QJsonDocument::fromJson(*json).object();
        const Note note {path, pathFromURL(object.value("target"_L1).toString()),
                         pathFromURL(object.value("rescue"_L1).toString())};
        if (isOurs(note))
            notes << note;
        else
            tellPassedOver(path, "it is no note of a save");
    }
    return notes;
}

/// A plain file that is no second name of \a target: what would be offered, and taken away afterwards.
bool isRescueOf(const QString &path, const QString &target)
{
    const CheckedFile file(path, O_RDONLY | O_NOFOLLOW);
    const FileState mine = FileState::of(file.descriptor());
    const FileState other = FileState::of(target);
    return file.isRegular() && (!other.exists || mine.inode != other.inode || mine.device != other.device);
}

/// The rescue files of one place, whole and not in use. Unfinished ones that nobody works on hold nothing
/// that is not in the old file or an autosave as well; they go.
QStringList leftAt(const QString &place, const QString &target)
{
    QStringList found;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const QString name = attempt ? place + u'-' + QString::number(attempt) : place;
        const QString unfinished = name + kUnfinished;
        if (isRescueOf(unfinished, target) && !isInUse(unfinished))
            removeFile(unfinished);
        if (fileKind(name) == FileKind::None) {
            if (attempt > 1)
                break;
            continue;
        }
        if (isRescueOf(name, target) && !isInUse(name))
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
    const QJsonObject object {{u"target"_s, portablePath(target)}, {u"rescue"_s, portablePath(rescue)}};
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)
        || file.write(QJsonDocument(object).toJson()) < 0)
        return {};
    return file.fileName();
}

QList<Found> leftFor(const QString &target)
{
    const QString path = canonicalOr(target);
    QStringList places {placeBeside(path)};
    if (const QString own = placeInOwnFolder(path); !own.isEmpty())
        places << own;
    QList<Found> found;
    for (const QString &place : std::as_const(places)) {
        for (const QString &rescue : leftAt(place, path))
            found << Found {rescue, path};
    }
    return found;
}

bool areMet(const QStringList &files, Error *error)
{
    for (const QString &file : files) {
        const QString target = canonicalOr(pathFromURL(file));
        QStringList places {placeBeside(target)};
        if (const QString data = StandardFolders::userData();
            fileKind(data + "/Rescue"_L1) == FileKind::Folder)
            places << placeInOwnFolder(target);
        for (const QString &place : std::as_const(places)) {
            for (int attempt = 0; attempt < kAttempts; ++attempt) {
                const QString rescue = attempt ? place + u'-' + QString::number(attempt) : place;
                const bool isThere = isRescueOf(rescue, target);
                if (!isThere && attempt > 1)
                    break;
                if (!isThere || isInUse(rescue) || haveSameContent(rescue, target))
                    continue;
                fail(error,
                     {u"RescueError"_s,
                      1,
                      Texts::tr("A save of “%1” did not end; its whole text lies in “%2”.")
                          .arg(shownPath(file), shownPath(rescue)),
                      {},
                      Texts::tr("Open the file in a window to restore or discard it, or go on with "
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
        if (isRescueOf(unfinished, note.target)) {
            if (isInUse(unfinished))
                continue;
            removeFile(unfinished);
        }
        if (!isRescueOf(note.rescue, note.target)) {
            QFile::remove(note.path);
        } else if (!isInUse(note.rescue) && !known.contains(note.rescue)) {
            known << note.rescue;
            found << Found {note.rescue, note.target};
        }
    }
    for (const QString &path : inOwnFolder(u'*' + kSuffix + u'*')) {
        if (known.contains(path) || !isRescueOf(path, {}) || isInUse(path))
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
    const bool isRemoved = removeFile(path);
    for (const Note &note : isRemoved ? allNotes() : QList<Note>()) {
        if (note.rescue == path)
            QFile::remove(note.path);
    }
    return isRemoved;
}

} // namespace runebook::RescueFiles
