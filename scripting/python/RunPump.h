#pragma once

#include "scripting/python/ScriptRun.h"
#include "scripting/python/Standstill.h"

#include <QObject>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

class QWidget;

namespace runebook {

class RunInput;

/// Keeps windows alive while a script runs on their thread: output appears, windows repaint; stopping the
/// script, scrolling, selecting and copying work. All other input is refused, and none of the program's own
/// work goes on in the middle of a run. While an operation of the program calls the script back (an observer,
/// a delegate), everything waits for the end of that operation. Main thread only.
class RunPump : public QObject, private RunObserver
{
    Q_OBJECT
public:
    /// The pump of the program; idle until start().
    static RunPump &shared();
    ~RunPump() override;

    /// Pumps during all runs from now on. For programs with windows; without them there is nothing to see.
    void start();
    /// Lets runs go on without it again.
    void end();

    /// Clicks on \a widget are answered during a run, too; for the buttons that stop it. Not owned, may go.
    void addStopControl(QWidget *widget);
    /// Is told when windows stand still during a run: inside of the interpreter's own code, where nothing can
    /// be painted and nothing interrupted. Not owned; null for none. Not during a run.
    void setStandstillWatcher(StandstillWatcher *watcher) { m_watcher = watcher; }
    bool isRunning() const { return m_isRunning; }
    /// Whether somebody has asked the run, or the last one, to stop.
    bool wasStopped() const { return m_stops > 0; }

public Q_SLOTS:
    /// Interrupts the run. When it goes on all the same, the next call interrupts it at every line that it
    /// still enters, so that no "except:" holds it up for long. Ctrl+. and Escape twice do this as well.
    void stop();

Q_SIGNALS:
    void runStarted();
    void runEnded();
    /// Somebody tried what cannot be done during a run.
    void refused();
    /// Some 30 times a second during a run, right before windows repaint.
    void pumped();

private:
    RunPump();
    void scriptStarted() override;
    void scriptEnded() override;
    void tick(std::thread::native_handle_type mainThread);
    bool hasTurned();
    void watch(std::unique_lock<std::mutex> &lock);
    void pump();
    void drainInput();
    static PyObject *pumpFromSignal(PyObject *, PyObject *);
    static bool installSignal();

    RunInput *m_input; // owned as a child
    bool m_isRunning = false;
    bool m_isPumping = false;
    int m_stops = 0;
    std::chrono::steady_clock::time_point m_startedAt;

    std::thread m_ticker;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isTicking = false;
    std::atomic<bool> m_isHeartbeatAwaited = false; ///< by the ticking thread, of the event loop
    StandstillWatcher *m_watcher = nullptr;
    Standstill m_standstill; ///< the ticking thread's, like the two below
    bool m_standsStill = false;
    std::chrono::steady_clock::time_point m_lookedAt;
    std::chrono::steady_clock::time_point m_pumpedAt;
};

} // namespace runebook
