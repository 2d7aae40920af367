#include "platform/Background.h"

#include <QCoreApplication>
#include <QObject>
#include <condition_variable>
#include <csignal>
#include <deque>
#include <mutex>
#include <pthread.h>
#include <thread>
#include <utility>
#include <vector>

namespace runebook {

namespace {

constexpr int kThreads = 2;

void leaveSignalsToTheMainThread()
{
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

/// Not the framework's pool: the thread sanitizer cannot see how that one hands work over.
class Workers
{
public:
    void add(std::function<void()> work)
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(std::move(work));
        if (m_threads.empty())
            start();
        m_wake.notify_one();
    }

    void stop()
    {
        std::vector<std::thread> threads;
        {
            const std::lock_guard lock(m_mutex);
            m_isStopping = true;
            m_waiting.clear();
            threads = std::exchange(m_threads, {});
        }
        m_wake.notify_all();
        for (std::thread &thread : threads)
            thread.join();
        m_isStopping = false;
    }

    void waitForAll()
    {
        std::unique_lock lock(m_mutex);
        m_idle.wait(lock, [this] { return m_waiting.empty() && m_busy == 0; });
    }

private:
    void start();
    void takeWork();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    int m_busy = 0;
    std::deque<std::function<void()>> m_waiting;
    std::vector<std::thread> m_threads;
    bool m_isStopping = false;
};

Workers &workers()
{
    // Never destroyed: threads may wait for it to the very end of the process.
    static Workers &shared = *new Workers;
    return shared;
}

void Workers::start()
{
    for (int i = 0; i < kThreads; ++i)
        m_threads.emplace_back([this] { takeWork(); });
    qAddPostRoutine([] { workers().stop(); });
}

void Workers::takeWork()
{
    leaveSignalsToTheMainThread();
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_isStopping || !m_waiting.empty(); });
        if (m_isStopping)
            return;
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        ++m_busy;
        lock.unlock();
        work();
        work = {};
        lock.lock();
        --m_busy;
        m_idle.notify_all();
    }
}

/// The threads that have work of their own.
class Apart
{
public:
    void add(std::function<void()> work)
    {
        if (!std::exchange(m_isWaitedFor, true))
            qAddPostRoutine([] { apart().end(); });
        const std::lock_guard lock(m_mutex);
        ++m_running;
        std::thread([this, work = std::move(work)]() mutable {
            leaveSignalsToTheMainThread();
            work();
            work = {};
            const std::lock_guard ending(m_mutex);
            --m_running;
            m_idle.notify_all();
        }).detach();
    }

    void waitForAll()
    {
        std::unique_lock lock(m_mutex);
        m_idle.wait(lock, [this] { return m_running == 0; });
    }

    static Apart &apart();

private:
    void end()
    {
        m_isWaitedFor = false;
        waitForAll();
    }

    std::mutex m_mutex;
    std::condition_variable m_idle;
    int m_running = 0;
    bool m_isWaitedFor = false;
};

Apart &Apart::apart()
{
    static Apart &shared = *new Apart;
    return shared;
}

/// What other threads want done on the main thread. The thread sanitizer cannot see the lock of the
/// framework's events, so the work itself goes by a queue of its own, and the event, which only says that
/// there is some, is made and read by the framework.
class MainThreadWork : public QObject
{
    Q_OBJECT
public:
    static MainThreadWork &shared()
    {
        static MainThreadWork &queue = *new MainThreadWork;
        return queue;
    }

    void add(std::function<void()> work)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_waiting.push_back(std::move(work));
        }
        QMetaObject::invokeMethod(this, "doNext", Qt::QueuedConnection);
    }

private:
    MainThreadWork() { moveToThread(QCoreApplication::instance()->thread()); }

    Q_INVOKABLE void doNext()
    {
        std::function<void()> work;
        {
            const std::lock_guard lock(m_mutex);
            work = std::move(m_waiting.front());
            m_waiting.pop_front();
        }
        work();
    }

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_waiting;
};

/// Before there is a thread that could ask for it, which then sees all of it.
void makeMainThreadWork()
{
    MainThreadWork::shared();
}
Q_COREAPP_STARTUP_FUNCTION(makeMainThreadWork)

} // namespace

void runOnMainThread(std::function<void()> work)
{
    if (QCoreApplication::instance())
        MainThreadWork::shared().add(std::move(work));
}

void runInBackground(std::function<void()> work)
{
    workers().add(std::move(work));
}

void runApart(std::function<void()> work)
{
    Apart::apart().add(std::move(work));
}

void waitForBackground()
{
    workers().waitForAll();
    Apart::apart().waitForAll();
}

} // namespace runebook

#include "Background.moc"
