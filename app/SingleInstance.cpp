#include "app/SingleInstance.h"

#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/defaults/UserDefaults.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <sys/stat.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr quint32 kMagic = 0x52756e31; // the first format of what is handed over
constexpr qsizetype kLongestMessage = 16 * 1024 * 1024;
constexpr qsizetype kMaxSocketPath = 100; // the system's limit is 108 bytes, the file's end included
constexpr int kPauseMs = 30;
const QByteArray kTaken = "taken";

/// Whether nothing lies at \a path but, at most, what a listening program leaves there.
bool isSocketOrNothing(const QString &path)
{
    struct stat status = {};
    return ::lstat(nativePath(path).constData(), &status) != 0 || S_ISSOCK(status.st_mode);
}

/// A folder that belongs to the user alone.
QString privateFolder()
{
    QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (const QFileInfo info(runtime); !runtime.isEmpty() && info.isDir() && info.isWritable())
        return runtime;
    const QString cache =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/runebook/run"_L1;
    const bool isMade = QDir().mkpath(cache)
        && QFile::setPermissions(cache, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return isMade ? cache : QString();
}

/// What stands in \a bytes, or nothing while it is not complete. Sets \a isBroken for what never will be.
std::optional<QStringList> messageIn(const QByteArray &bytes, bool &isBroken)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_4);
    quint32 magic = 0;
    QByteArray paths;
    stream >> magic;
    isBroken = bytes.size() > kLongestMessage || (bytes.size() >= 4 && magic != kMagic);
    if (isBroken)
        return {};
    stream >> paths;
    if (stream.status() != QDataStream::Ok)
        return {};
    QStringList files = QString::fromUtf8(paths).split(u'\0', Qt::SkipEmptyParts);
    std::transform(files.cbegin(), files.cend(), files.begin(), &pathFromURL);
    files.removeIf([](const QString &path) { return !QDir::isAbsolutePath(path); });
    return files;
}

QByteArray messageOf(const QStringList &files)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    QStringList paths;
    std::transform(files.cbegin(), files.cend(), std::back_inserter(paths), &portablePath);
    stream << kMagic << paths.join(u'\0').toUtf8();
    return bytes;
}

} // namespace

QString SingleInstance::standardSocketPath()
{
    const QString folder = privateFolder();
    if (folder.isEmpty())
        return {};
    const QByteArray name =
        QCryptographicHash::hash(UserDefaults::standard().fileName().toUtf8(), QCryptographicHash::Sha1)
            .toHex()
            .left(12);
    const QString path = folder + "/runebook-"_L1 + QString::fromLatin1(name);
    return QFile::encodeName(path).size() <= kMaxSocketPath ? path : QString();
}

SingleInstance::SingleInstance(const QString &socketPath, QObject *parent)
    : QObject(parent), m_socketPath(socketPath), m_lock(socketPath + ".lock"_L1)
{
    // Held for as long as the program runs, however long that is; a dead holder is noticed by its number.
    m_lock.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::claim(const QStringList &files)
{
    if (m_socketPath.isEmpty())
        return Role::Alone;
    // Looking who holds it would wait at a pipe.
    if (isOddity(m_socketPath + ".lock"_L1)) {
        tellPassedOver(m_socketPath + ".lock"_L1, "it is no lock");
        return Role::Alone;
    }
    const QDeadlineTimer deadline(m_timeLimitMs);
    do {
        if (m_lock.tryLock(0))
            return listen() ? Role::First : Role::Alone;
        if (m_lock.error() != QLockFile::LockFailedError)
            return Role::Alone;
        // The holder may have begun just now and not listen yet.
        if (handOver(files))
            return Role::Second;
        QThread::msleep(kPauseMs);
    } while (!deadline.hasExpired());
    return Role::Alone;
}

bool SingleInstance::listen()
{
    // Only who holds the lock comes here: a socket that is there is left from a program that is no more.
    if (!isSocketOrNothing(m_socketPath)) {
        tellPassedOver(m_socketPath, "it is no socket");
        return false;
    }
    QLocalServer::removeServer(m_socketPath);
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    connect(m_server.get(), &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection())
            serve(socket);
    });
    return m_server->listen(m_socketPath);
}

void SingleInstance::serve(QLocalSocket *socket)
{
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QTimer::singleShot(m_timeLimitMs, socket, [socket] { socket->abort(); });
    socket->setReadBufferSize(kLongestMessage + 1);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        bool isBroken = false;
        const auto files = messageIn(socket->peek(kLongestMessage + 1), isBroken);
        if (isBroken)
            socket->abort();
        if (!files)
            return;
        socket->readAll();
        socket->write(kTaken);
        socket->disconnectFromServer();
        Q_EMIT filesReceived(*files);
    });
}

bool SingleInstance::handOver(const QStringList &files)
{
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(m_timeLimitMs))
        return false;
    socket.write(messageOf(files));
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(m_timeLimitMs))
            return false;
    }
    while (socket.bytesAvailable() < kTaken.size()) {
        if (!socket.waitForReadyRead(m_timeLimitMs))
            return false;
    }
    return socket.readAll() == kTaken;
}

} // namespace runebook
