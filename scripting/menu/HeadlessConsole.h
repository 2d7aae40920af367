#pragma once

#include "scripting/python/ScriptConsole.h"

#include <QByteArray>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace runebook {

/// The process's own output as the console of scripts. Text appears within some milliseconds of being
/// written, at once before error text and before another program is started; short texts travel together,
/// since a system call for each would take longer than everything else. On any thread.
class HeadlessConsole final : public ScriptConsole
{
public:
    HeadlessConsole();
    ~HeadlessConsole() override;

    void setWrite(const QString &text) override;
    void setWriteError(const QString &text) override;
    bool takesAnyThread() const override { return true; }
    /// Writes out what is held back.
    void flush() override;
    /// Why output or errors could not take all text (a full disk), as an errno; 0 when they could.
    int failure() const { return m_failure; }

private:
    void flushLocked();
    void writeAll(int descriptor, const QByteArray &bytes);
    void flushInTime();
    static void prepareFork();
    static void endFork(bool isChild);

    static HeadlessConsole *s_console; ///< the one of the process
    bool m_holds = true; ///< not in a forked process, where nobody writes out in time
    std::mutex m_mutex;
    std::condition_variable m_wake;
    QByteArray m_held;
    int m_failure = 0;
    bool m_isEnding = false;
    std::thread m_flusher;
};

} // namespace runebook
