#include "app/LeaveOnSignal.h"

#include <QSocketNotifier>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace runebook {

namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};
constexpr time_t kLongestAnswer = 5; // seconds

std::atomic<int> asked = 0; ///< the signal that came first
std::atomic<time_t> askedAt = 0;
int wakePipe[2] = {-1, -1};

void dieOf(int number)
{
    ::signal(number, SIG_DFL);
    ::raise(number);
}

time_t now()
{
    timespec time {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

/// In the middle of anything: nothing but what is safe there.
void onSignal(int number)
{
    const int error = errno;
    int none = 0;
    if (asked.compare_exchange_strong(none, number)) {
        askedAt = now();
        const char byte = 1;
        [[maybe_unused]] const auto written = ::write(wakePipe[1], &byte, 1);
    } else if (now() - askedAt > kLongestAnswer) {
        dieOf(number);
    }
    errno = error;
}

bool isIgnored(int number)
{
    struct sigaction present {
    };
    return ::sigaction(number, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

} // namespace

LeaveOnSignal::LeaveOnSignal(std::function<void()> keep, QObject *parent)
    : QObject(parent), m_keep(std::move(keep))
{
    if (::pipe2(wakePipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = new QSocketNotifier(wakePipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &LeaveOnSignal::look);
    struct sigaction action {
    };
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : kSignals) {
        if (number != SIGHUP || !isIgnored(number))
            ::sigaction(number, &action, nullptr);
    }
}

LeaveOnSignal::~LeaveOnSignal()
{
    for (const int number : kSignals) {
        if (!isIgnored(number))
            ::signal(number, SIG_DFL);
    }
    for (int &end : wakePipe)
        ::close(std::exchange(end, -1));
}

void LeaveOnSignal::look()
{
    const int number = asked;
    if (number == 0 || std::exchange(m_isLeaving, true))
        return;
    if (m_notifier)
        m_notifier->setEnabled(false); // windows may turn until all is kept
    m_keep();
    dieOf(number);
}

} // namespace runebook
