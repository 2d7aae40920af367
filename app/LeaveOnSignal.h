#pragma once

#include <QObject>
#include <functional>

class QSocketNotifier;

namespace runebook {

/// Ends the program when somebody asks the process to go (SIGTERM, SIGINT, SIGHUP unless it is ignored, as
/// "nohup" has it): what \a keep does is done first, on the main thread, then the process dies of the signal
/// as if nobody had been in its way. While a script runs, too, unless it stands in one uninterruptible call.
/// A second signal that comes when the first one was not answered for long ends the program at once. One for
/// the program.
class LeaveOnSignal : public QObject
{
    Q_OBJECT
public:
    explicit LeaveOnSignal(std::function<void()> keep, QObject *parent = nullptr);
    ~LeaveOnSignal() override;

    /// Leaves if a signal has come; for places where the event loop does not look.
    void look();

private:
    std::function<void()> m_keep;
    QSocketNotifier *m_notifier = nullptr; // owned as a child
    bool m_isLeaving = false;
};

} // namespace runebook
