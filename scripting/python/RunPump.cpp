#include "scripting/python/RunPump.h"

#include "platform/Background.h"
#include "platform/CallLater.h"
#include "platform/documents/DocumentController.h"
#include "scripting/python/OperationScope.h"
#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonValue.h"
#include "scripting/python/RunInput.h"

#include <QApplication>
#include <QScopedValueRollback>
#include <QWidget>
#include <csignal>
#include <pthread.h>

namespace runebook {

namespace {

constexpr std::chrono::milliseconds kInterval {30};

int pumpSignal()
{
    return SIGRTMIN + 6;
}

/// Paints what waits for it now: between two turns of the event loop much of a script can pass.
void paintWindows()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (!widget->isVisible())
            continue;
        QEvent update(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(widget, &update);
    }
}

} // namespace

RunPump &RunPump::shared()
{
    static RunPump pump;
    return pump;
}

RunPump::RunPump() : m_input(new RunInput(this))
{
    connect(m_input, &RunInput::stopRequested, this, &RunPump::stop);
    connect(m_input, &RunInput::refused, this, &RunPump::refused);
}

RunPump::~RunPump()
{
    end();
}

void RunPump::start()
{
    ScriptRun::setObserver(this);
}

void RunPump::end()
{
    ScriptRun::setObserver(nullptr);
    if (m_isRunning)
        scriptEnded();
}

void RunPump::addStopControl(QWidget *widget)
{
    m_input->addStopControl(widget);
}

void RunPump::stop()
{
    if (!m_isRunning)
        return;
    if (++m_stops == 1)
        ScriptRun::interrupt();
    else
        ScriptRun::interruptForGood();
}

void RunPump::scriptStarted()
{
    static const bool canPump = installSignal();
    if (!canPump)
        return;
    m_isRunning = true;
    m_stops = 0;
    m_isTicking = true;
    m_startedAt = m_pumpedAt = std::chrono::steady_clock::now();
    Q_EMIT runStarted();
    // Seen before the script's first step: it may be the last thing that is painted for long.
    if (!OperationScope::isInside()) {
        paintWindows();
        m_input->processEvents();
    }
    m_ticker = std::thread([this, thread = ::pthread_self()] { tick(thread); });
}

void RunPump::scriptEnded()
{
    if (!m_isRunning)
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_isTicking = false;
    }
    m_wake.notify_one();
    m_ticker.join();
    drainInput();
    m_isRunning = false;
    callLater(m_input, [this] { m_input->deleteWaiting(); });
    Q_EMIT runEnded();
}

/// What was pressed while the script held the thread still lies with the window system, and was not meant for
/// what comes after the run. A run shorter than a pause between two pumps is none that anybody could have
/// met.
void RunPump::drainInput()
{
    if (OperationScope::isInside() || std::chrono::steady_clock::now() - m_startedAt < kInterval)
        return;
    const QScopedValueRollback guard(m_isPumping, true);
    m_input->drain();
}

/// On a thread of its own.
void RunPump::tick(std::thread::native_handle_type mainThread)
{
    // Signals are for the script.
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    m_standstill = {};
    m_lookedAt = std::chrono::steady_clock::now();
    std::unique_lock lock(m_mutex);
    while (!m_wake.wait_for(lock, kInterval / 2, [this] { return !m_isTicking; })) {
        // The script gets at least as long as the pause between two pumps, however slow windows paint.
        if (std::chrono::steady_clock::now() - m_pumpedAt >= kInterval)
            ::pthread_kill(mainThread, pumpSignal());
        if (m_watcher)
            watch(lock);
    }
    if (std::exchange(m_standsStill, false))
        m_watcher->windowsTurn();
}

/// Whether the event loop has turned since the last call; a dialog of the script turns it, too.
bool RunPump::hasTurned()
{
    if (m_isHeartbeatAwaited)
        return false;
    m_isHeartbeatAwaited = true;
    runOnMainThread([this] { m_isHeartbeatAwaited = false; });
    return true;
}

/// Without the lock while the watcher works: the pump waits for it.
void RunPump::watch(std::unique_lock<std::mutex> &lock)
{
    constexpr std::chrono::seconds kWorthTelling {1};
    const auto now = std::chrono::steady_clock::now();
    m_standstill.look(std::chrono::duration_cast<Standstill::Duration>(now - m_lookedAt), hasTurned());
    m_lookedAt = now;
    const bool standsStill = m_standstill.length() >= kWorthTelling;
    if (!standsStill && !m_standsStill)
        return;
    m_standsStill = standsStill;
    lock.unlock();
    if (standsStill)
        m_watcher->windowsStand(m_standstill.length());
    else
        m_watcher->windowsTurn();
    lock.lock();
}

/// The interpreter calls a handler of a signal between two steps of the script, as it does pending calls; but
/// a signal also comes through to a script that sleeps, waits or is inside of a regular expression, where
/// pending calls have to wait for its end.
bool RunPump::installSignal()
{
    using bridge::PythonRef;
    static PyMethodDef functions[] = {{"pump", pumpFromSignal, python::kVarArgs, nullptr},
                                      {nullptr, nullptr, 0, nullptr}};
    static PyModuleDef definition {{{1, nullptr}, nullptr, 0, nullptr},
                                   "_runebook_pump",
                                   nullptr,
                                   -1,
                                   functions,
                                   nullptr,
                                   nullptr,
                                   nullptr,
                                   nullptr};
    const PythonRef module(vxPyModule_Create2(&definition, python::kApiVersion));
    const PythonRef function(module ? py.PyObject_GetAttrString(module.get(), "pump") : nullptr);
    const PythonRef signals(vxPyImport_ImportModule("_signal"));
    const PythonRef installed(function && signals ? vxPyObject_CallMethod(signals.get(), "signal", "(iO)",
                                                                          pumpSignal(), function.get())
                                                  : nullptr);
    vxPyErr_Clear();
    return static_cast<bool>(installed);
}

PyObject *RunPump::pumpFromSignal(PyObject *, PyObject *)
{
    RunPump &pump = shared();
    const bool wentWell = bridge::guarded<bool>(false, [&pump] {
        pump.pump();
        return true;
    });
    if (!wentWell || ScriptRun::raiseKeptEnd())
        return nullptr;
    if (pump.m_isRunning && ScriptRun::isInterruptedForGood()) {
        // A script may have told the interpreter to ignore interrupts.
        py.PyErr_SetObject(*py.PyExc_KeyboardInterrupt, py._Py_NoneStruct);
        return nullptr;
    }
    return bridge::none();
}

void RunPump::pump()
{
    if (!m_isRunning || m_isPumping)
        return;
    if (!OperationScope::isInside()) {
        const QScopedValueRollback guard(m_isPumping, true);
        deliverPendingOutput();
        DocumentController::shared().autosaveWhatIsDue();
        Q_EMIT pumped();
        m_input->processEvents();
        paintWindows();
    }
    const std::lock_guard lock(m_mutex);
    m_pumpedAt = std::chrono::steady_clock::now();
}

} // namespace runebook
