#include "app/RunWatch.h"

#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QTemporaryFile>
#include <QTime>
#include <csignal>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr Standstill::Duration kFirstOffer = 5s;
constexpr Standstill::Duration kNextOffer = 30s; ///< after somebody chose to wait
constexpr quint32 kSessionFormat = 0x52425331;
constexpr qint64 kLargestSession = 16 << 20;

bool isTraced()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf("TracerPid:");
    return at >= 0 && text.mid(at + 10, text.indexOf('\n', at) - at - 10).trimmed() != "0";
}

} // namespace

QByteArray ReopenedSession::toBytes() const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << kSessionFormat << process << windows;
    return bytes;
}

std::optional<ReopenedSession> ReopenedSession::fromBytes(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    quint32 format = 0;
    ReopenedSession session;
    stream >> format;
    if (format != kSessionFormat)
        return std::nullopt;
    stream >> session.process >> session.windows;
    return stream.status() == QDataStream::Ok ? std::optional(session) : std::nullopt;
}

std::optional<ReopenedSession> ReopenedSession::take(const QString &path)
{
    struct stat state {
    };
    const QByteArray name = QFile::encodeName(path);
    if (::lstat(name.constData(), &state) != 0 || !S_ISREG(state.st_mode) || state.st_uid != ::getuid()
        || state.st_size > kLargestSession)
        return std::nullopt;
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    std::optional<ReopenedSession> session = fromBytes(bytes);
    if (session)
        file.remove();
    return session;
}

RunWatch::RunWatch(std::function<QVariantList()> capture, QObject *parent)
    : QObject(parent),
      m_capture(std::move(capture)),
      m_program(QFile::encodeName(QCoreApplication::applicationFilePath())),
      m_nextOffer(kFirstOffer)
{
    connect(&RunPump::shared(), &RunPump::runStarted, this, &RunWatch::noteRun);
    RunPump::shared().setStandstillWatcher(this);
}

RunWatch::~RunWatch()
{
    RunPump::shared().setStandstillWatcher(nullptr);
}

void RunWatch::noteRun()
{
    const QByteArray session = ReopenedSession {QCoreApplication::applicationPid(), m_capture()}.toBytes();
    const std::lock_guard lock(m_mutex);
    m_session = session;
    m_name = ScriptRun::currentName().toUtf8();
    m_since = QLocale().toString(QTime::currentTime(), QLocale::ShortFormat).toUtf8();
}

void RunWatch::windowsStand(Standstill::Duration length)
{
    if (isWindowOpen() || length < m_nextOffer || isTraced())
        return;
    startWindow();
    m_nextOffer = length + kNextOffer;
}

void RunWatch::windowsTurn()
{
    endWindow();
    m_nextOffer = kFirstOffer;
}

bool RunWatch::isWindowOpen()
{
    if (m_window > 0 && ::waitpid(m_window, nullptr, WNOHANG) == 0)
        return true;
    m_window = 0;
    return false;
}

void RunWatch::startWindow()
{
    const std::lock_guard lock(m_mutex);
    QTemporaryFile file(QDir::tempPath() + "/runebook-session-XXXXXX"_L1);
    file.setAutoRemove(false);
    if (!file.open() || file.write(m_session) != m_session.size() || !file.flush())
        return;
    m_sessionFile = QFile::encodeName(file.fileName());
    char option[] = "--watch-run", endOfOptions[] = "--";
    char *const arguments[] = {const_cast<char *>(m_program.constData()),
                               option,
                               m_sessionFile.data(),
                               endOfOptions,
                               m_name.data(),
                               m_since.data(),
                               nullptr};
    // The signals of this thread are blocked; those of the window are not.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t none;
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    if (::posix_spawn(&m_window, m_program.constData(), nullptr, &attributes, arguments, environ) != 0) {
        m_window = 0;
        QFile::remove(QFile::decodeName(m_sessionFile));
    }
    ::posix_spawnattr_destroy(&attributes);
}

void RunWatch::endWindow()
{
    if (isWindowOpen()) {
        ::kill(m_window, SIGTERM);
        ::waitpid(m_window, nullptr, 0);
    }
    m_window = 0;
    if (!m_sessionFile.isEmpty())
        QFile::remove(QFile::decodeName(std::exchange(m_sessionFile, {})));
}

} // namespace runebook
