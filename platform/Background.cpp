#include "platform/Background.h"

#include <QCoreApplication>
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

private:
    void start();
    void takeWork();

    std::mutex m_mutex;
    std::condition_variable m_wake;
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
    // Signals are for the main thread.
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_isStopping || !m_waiting.empty(); });
        if (m_isStopping)
            return;
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        work();
        work = {};
        lock.lock();
    }
}

} // namespace

void runInBackground(std::function<void()> work)
{
    workers().add(std::move(work));
}

} // namespace runebook
