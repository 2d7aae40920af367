#include "platform/documents/FileWatch.h"

#include "platform/Background.h"
#include "platform/TurningWindows.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QGuiApplication>
#include <QPointer>
#include <memory>

namespace runebook {

namespace {

constexpr int kLookMs = 1000;
constexpr int kSettleMs = 150;
constexpr int kLongestSettlingMs = 700;

/// One for the program: the number of watchers that a user may have is small.
QFileSystemWatcher *watcher()
{
    // Never destroyed: some documents go only with the process.
    static QPointer<QFileSystemWatcher> &shared = *new QPointer<QFileSystemWatcher>;
    if (!shared && QCoreApplication::instance())
        shared = new QFileSystemWatcher(QCoreApplication::instance());
    return shared;
}

/// The hash of the file's content if it is still in that state afterwards.
std::optional<quint64> hashInState(const QString &path, const FileState &state)
{
    const std::optional<quint64> hash = contentHash(path);
    return FileState::of(path) == state ? hash : std::nullopt;
}

using Hash = std::optional<quint64>;

Hash valueWithin(const std::shared_future<Hash> &hash, std::chrono::seconds patience)
{
    const bool isReady = hash.valid() && hash.wait_for(patience) == std::future_status::ready;
    return isReady ? hash.get() : std::nullopt;
}

bool isInFront()
{
    return qGuiApp && QGuiApplication::applicationState() == Qt::ApplicationActive;
}

} // namespace

FileWatch::FileWatch(QObject *parent) : QObject(parent)
{
    m_lookTimer.setInterval(kLookMs);
    connect(&m_lookTimer, &QTimer::timeout, this, [this] {
        if (!m_isArmed || isInFront())
            look();
    });
    m_settleTimer.setSingleShot(true);
    m_settleTimer.setInterval(kSettleMs);
    connect(&m_settleTimer, &QTimer::timeout, this, &FileWatch::settle);
    if (QFileSystemWatcher *shared = watcher())
        connect(shared, &QFileSystemWatcher::fileChanged, this, &FileWatch::onNotice);
    if (auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        connect(application, &QGuiApplication::applicationStateChanged, this,
                [this](Qt::ApplicationState state) {
                    if (state == Qt::ApplicationActive)
                        look();
                });
}

FileWatch::~FileWatch()
{
    if (QFileSystemWatcher *shared = watcher(); shared && !m_path.isEmpty())
        shared->removePath(m_path);
}

void FileWatch::watch(const QString &path, const FileState &known)
{
    if (QFileSystemWatcher *shared = watcher(); shared && !m_path.isEmpty() && path != m_path)
        shared->removePath(m_path);
    if (path == m_path && known == m_known && m_change == Change::None && m_seen == known)
        return;
    m_path = path;
    m_known = known;
    m_seen = known;
    m_settling = known;
    m_settleTimer.stop();
    m_change = Change::None;
    m_hash = {};
    if (m_path.isEmpty()) {
        m_lookTimer.stop();
        return;
    }
    startHash();
    arm();
    m_lookTimer.start();
    look(); // something may have happened since that state was known
}

void FileWatch::takeAsKnown()
{
    if (!m_path.isEmpty())
        watch(m_path, FileState::of(m_path));
}

void FileWatch::startHash()
{
    if (!m_known.exists)
        return;
    // Not by std::async: whoever lets go of its result has to wait for it.
    auto promise = std::make_shared<std::promise<std::optional<quint64>>>();
    m_hash = promise->get_future().share();
    runInBackground(
        [promise, path = m_path, state = m_known] { promise->set_value(hashInState(path, state)); });
}

std::optional<quint64> FileWatch::knownHash()
{
    return valueWithin(m_hash, std::chrono::seconds(0));
}

void FileWatch::arm()
{
    // A watcher forgets a file whose name was given to another one.
    QFileSystemWatcher *shared = watcher();
    m_isArmed =
        shared && QFileInfo::exists(m_path) && (shared->files().contains(m_path) || shared->addPath(m_path));
}

void FileWatch::onNotice(const QString &path)
{
    if (path != m_path)
        return;
    arm();
    look();
}

void FileWatch::look()
{
    // What the program is just writing is no news.
    if (m_path.isEmpty() || m_settleTimer.isActive() || TurningWindows::areTurning())
        return;
    const FileState now = FileState::of(m_path);
    if (now == m_seen)
        return;
    // Somebody may be in the middle of writing, or about to put a new file in the old one's place.
    m_settling = now;
    m_unsettled.start();
    m_settleTimer.start();
}

void FileWatch::settle()
{
    const FileState now = FileState::of(m_path);
    if (TurningWindows::areTurning() || (now != m_settling && m_unsettled.elapsed() < kLongestSettlingMs)) {
        m_settling = now;
        m_settleTimer.start();
        return;
    }
    check();
}

FileWatch::Change FileWatch::compare(const FileState &now)
{
    if (now == m_known)
        return Change::None;
    if (!now.exists)
        return Change::Removed;
    if (m_known.exists && now.size == m_known.size) {
        const std::optional<quint64> hash = valueWithin(m_hash, std::chrono::seconds(2));
        if (hash && contentHash(m_path) == hash) {
            m_known = now;
            return Change::None;
        }
    }
    if (now.inode != m_known.inode || now.device != m_known.device)
        return Change::Replaced;
    return now.size == 0 ? Change::Emptied : Change::Changed;
}

FileWatch::Change FileWatch::check()
{
    if (m_path.isEmpty())
        return Change::None;
    m_settleTimer.stop();
    const FileState now = FileState::of(m_path);
    if (now == m_seen)
        return m_change;
    m_seen = now;
    const Change before = m_change;
    m_change = compare(now);
    arm();
    if (m_change != Change::None || before != Change::None)
        Q_EMIT changed(m_change);
    return m_change;
}

} // namespace runebook
