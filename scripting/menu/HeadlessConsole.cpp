#include "scripting/menu/HeadlessConsole.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <unistd.h>

namespace runebook {

namespace {

constexpr qsizetype kMaxHeldBytes = 1 << 16;
constexpr std::chrono::milliseconds kHoldTime {4};

/// Threads of the program's own must not take the signals that are meant for the script.
void blockSignals()
{
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

/// Whoever reads the output has gone: the process ends as every other program in a pipe does. The
/// interpreter had the signal ignored.
void endOnBrokenPipe()
{
    ::signal(SIGPIPE, SIG_DFL);
    sigset_t brokenPipe;
    ::sigemptyset(&brokenPipe);
    ::sigaddset(&brokenPipe, SIGPIPE);
    ::pthread_sigmask(SIG_UNBLOCK, &brokenPipe, nullptr);
    ::raise(SIGPIPE);
}

} // namespace

HeadlessConsole::HeadlessConsole()
{
    m_held.reserve(kMaxHeldBytes);
    s_console = this;
    // A process that a script forks has none of the threads of this one.
    ::pthread_atfork([] { prepareFork(); }, [] { endFork(false); }, [] { endFork(true); });
    m_flusher = std::thread([this] { flushInTime(); });
}

HeadlessConsole *HeadlessConsole::s_console = nullptr;

void HeadlessConsole::prepareFork()
{
    if (!s_console)
        return;
    s_console->m_mutex.lock();
    s_console->flushLocked();
}

void HeadlessConsole::endFork(bool isChild)
{
    if (!s_console)
        return;
    s_console->m_holds = !isChild && s_console->m_holds;
    s_console->m_mutex.unlock();
}

HeadlessConsole::~HeadlessConsole()
{
    s_console = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        flushLocked();
        m_isEnding = true;
    }
    m_wake.notify_one();
    m_flusher.join();
}

void HeadlessConsole::setWrite(const QString &text)
{
    const std::lock_guard lock(m_mutex);
    const bool wasEmpty = m_held.isEmpty();
    m_held += text.toUtf8();
    if (m_held.size() >= kMaxHeldBytes || !m_holds)
        flushLocked();
    else if (wasEmpty && !m_held.isEmpty())
        m_wake.notify_one();
}

void HeadlessConsole::setWriteError(const QString &text)
{
    const std::lock_guard lock(m_mutex);
    flushLocked();
    writeAll(STDERR_FILENO, text.toUtf8());
}

void HeadlessConsole::flush()
{
    const std::lock_guard lock(m_mutex);
    flushLocked();
}

void HeadlessConsole::flushLocked()
{
    if (m_held.isEmpty())
        return;
    writeAll(STDOUT_FILENO, m_held);
    m_held.resize(0);
}

void HeadlessConsole::writeAll(int descriptor, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::write(descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
        if (count >= 0) {
            done += count;
        } else if (errno == EPIPE) {
            endOnBrokenPipe();
            return;
        } else if (errno != EINTR && errno != EAGAIN) {
            m_failure = errno;
            return;
        }
    }
}

void HeadlessConsole::flushInTime()
{
    blockSignals();
    std::unique_lock lock(m_mutex);
    while (!m_isEnding) {
        m_wake.wait(lock, [this] { return m_isEnding || !m_held.isEmpty(); });
        if (m_wake.wait_for(lock, kHoldTime, [this] { return m_isEnding; }))
            break;
        flushLocked();
    }
}

} // namespace runebook
