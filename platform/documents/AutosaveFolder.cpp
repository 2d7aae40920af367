#include "platform/documents/AutosaveFolder.h"

#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/StandardFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

QByteArray AutosaveNote::toJson() const
{
    QJsonObject object {{u"originalPath"_s, portablePath(originalPath)},
                        {u"type"_s, type},
                        {u"displayName"_s, displayName},
                        {u"original"_s, original.toJson()},
                        {u"savedAt"_s, savedAt.toUTC().toString(Qt::ISODateWithMs)},
                        {u"process"_s, process}};
    if (originalHash)
        object.insert(u"originalHash"_s, QString::number(*originalHash));
    return QJsonDocument(object).toJson();
}

AutosaveNote AutosaveNote::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    AutosaveNote note;
    note.originalPath = pathFromURL(object.value("originalPath"_L1).toString());
    note.type = object.value("type"_L1).toString();
    note.displayName = object.value("displayName"_L1).toString();
    note.original = FileState::fromJson(object.value("original"_L1).toObject());
    bool isNumber = false;
    const quint64 hash = object.value("originalHash"_L1).toString().toULongLong(&isNumber);
    if (isNumber)
        note.originalHash = hash;
    note.savedAt = QDateTime::fromString(object.value("savedAt"_L1).toString(), Qt::ISODateWithMs);
    note.process = object.value("process"_L1).toInteger();
    return note;
}

namespace AutosaveFolder {

QString besideContent(const QString &contentPath, QLatin1StringView suffix)
{
    return contentPath.chopped(kContentSuffix.size()) + suffix;
}

namespace {

constexpr auto kLockName = "/lock"_L1;

/// The lock of \a folder, or -1 when a living process has it. A folder without lock was never finished.
int takeLock(const QString &folder)
{
    const int lock = ::open(nativePath(folder + kLockName).constData(),
                            O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600);
    struct stat status = {};
    if (lock >= 0 && (::fstat(lock, &status) != 0 || !S_ISREG(status.st_mode))) {
        ::close(lock);
        tellPassedOver(folder, "its lock is no plain file");
        return -1;
    }
    // Where the file system knows no locks the folder is this process's by its name.
    if (lock < 0 || ::flock(lock, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
        return lock;
    ::close(lock);
    return -1;
}

QString root()
{
    const QString own = StandardFolders::userData();
    return own.isEmpty() ? QString() : own + "/Autosave"_L1;
}

/// The folder of this process, while it has one.
struct Own {
    ~Own() { leave(); }
    void leave()
    {
        if (process == ::getpid() && !path.isEmpty()
            && QDir(path).entryList(QDir::Files | QDir::Hidden) == QStringList {u"lock"_s}) {
            QFile::remove(path + kLockName);
            QDir().rmdir(path);
        }
        if (lock >= 0)
            ::close(lock);
        lock = -1;
        path.clear();
    }

    QString path;
    int lock = -1;
    pid_t process = 0; ///< a fork is another process
};

Own &ownFolder()
{
    static Own folder;
    return folder;
}

} // namespace

QString own(Error *error)
{
    Own &folder = ownFolder();
    const QString base = root();
    if (folder.process == ::getpid() && !base.isEmpty() && folder.path.startsWith(base)
        && QFileInfo::exists(folder.path + kLockName))
        return folder.path;
    folder.leave();
    folder.process = ::getpid();
    const QString path = base + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces);
    if (!base.isEmpty() && QDir().mkpath(path))
        folder.lock = takeLock(path);
    if (folder.lock >= 0) {
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return folder.path = path;
    }
    fail(error,
         {u"SaveError"_s,
          2,
          QCoreApplication::translate("AutosaveFolder", "There is no folder for autosaved documents."),
          base.isEmpty() ? QString() : base,
          {}});
    return {};
}

bool isOwnName(const QString &fileName)
{
    const QString number = fileName.section(u'.', 0, 0);
    return fileName == "lock"_L1 || (number.size() == 36 && !QUuid::fromString(number).isNull());
}

void removeOwnIfEmpty()
{
    Own &folder = ownFolder();
    if (folder.process == ::getpid())
        folder.leave();
}

Abandoned::Abandoned(const QString &path) : m_path(path), m_lock(takeLock(path)) { }

Abandoned::~Abandoned()
{
    if (m_lock < 0)
        return;
    if (QDir(m_path).entryList(QDir::Files | QDir::Hidden) == QStringList {u"lock"_s}) {
        QFile::remove(m_path + kLockName);
        QDir().rmdir(m_path);
    }
    ::close(m_lock);
}

QStringList others()
{
    QStringList paths;
    const QString base = root();
    if (base.isEmpty())
        return paths;
    const QDir folder(base);
    for (const QFileInfo &info : folder.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = folder.filePath(info.fileName());
        if (path == ownFolder().path)
            continue;
        if (info.isSymLink() || QUuid::fromString(info.fileName()).isNull())
            tellPassedOver(path, "it is no folder of autosaves");
        else
            paths << path;
    }
    return paths;
}

} // namespace AutosaveFolder

} // namespace runebook
