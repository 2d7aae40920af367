#pragma once

#include "scripting/python/OperationScope.h"
#include "scripting/python/PythonABI.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <optional>
#include <vector>

/// Compiles UTF-8 \a code under the file name \a label and runs it in the module "__main__". True when it ran
/// to its end; an uncaught error is printed to sys.stderr. The lock of the interpreter must be held.
bool vxRun_SimpleString(const char *code, const char *label);
/// The same for one line as it is entered in an interactive session: the value of an expression is printed.
bool vxRun_Line(const char *code, const char *label);

namespace runebook {

class UndoManager;

/// How a run ended.
struct ScriptOutcome {
    bool hasFailed = false; ///< an uncaught error was printed
    bool wasInterrupted = false; ///< and the last one of them was an interrupt
    std::optional<int> exitStatus; ///< the script ended itself with sys.exit

    /// The exit status of a process that did nothing else.
    int processStatus() const { return exitStatus ? *exitStatus : hasFailed ? 1 : 0; }
};

/// Is told of runs, on the main thread with the lock of the interpreter held.
class RunObserver
{
public:
    virtual ~RunObserver() = default;
    virtual void scriptStarted() = 0;
    virtual void scriptEnded() = 0;
};

/// The lock of the interpreter, for one scope. On any thread.
class PythonLock
{
public:
    PythonLock();
    ~PythonLock();
    Q_DISABLE_COPY_MOVE(PythonLock)

private:
    int m_state;
};

/// The names of the module "__main__", held for one scope: a script may put another module in its place, or
/// none.
class MainNamespace
{
public:
    MainNamespace();
    ~MainNamespace();
    Q_DISABLE_COPY_MOVE(MainNamespace)

    /// Null, with an error of the interpreter set, when there is no such module.
    PyObject *get() const { return m_dictionary; }

private:
    PyObject *m_dictionary = nullptr;
};

/// One run of a script, for one scope on the main thread: what was being typed is handed over first, changes
/// of each document become one undo step, and the run can be interrupted. Runs inside a run belong to it.
class ScriptRun : public QObject
{
public:
    explicit ScriptRun(const QString &undoName);
    ~ScriptRun() override;

    /// Whether a field of a window refused what is being typed, so that nothing may run; it was said why.
    bool isRefused() const { return m_isRefused; }
    static bool isRunning();
    /// What runs, in the user's words: the title of a tab or the name of a script; empty when nothing does.
    static QString currentName();
    /// Raises KeyboardInterrupt in the script that runs, wherever it is: in a loop, asleep, waiting for a
    /// lock, inside a regular expression. Does nothing when none runs. On any thread.
    static void interrupt();
    /// Raises KeyboardInterrupt at every line that the script still enters, until the run ends, so that no
    /// "except:" can go on for long. Main thread, the lock held.
    static void interruptForGood();
    /// True from then on until the error that ended the script is reported.
    static bool isInterruptedForGood();
    /// The pending error is one that ends scripts (an interrupt, sys.exit) and came up in code that the
    /// program called: keeps it until the program comes back to the script. False, with the error as it was,
    /// for other errors and when no script runs. Main thread, the lock held.
    static bool keepEnd();
    /// Raises the end that was kept; true when there was one.
    static bool raiseKeptEnd();
    /// Not owned; null for none.
    static void setObserver(RunObserver *observer);
    /// How the run on this thread stands so far, or how the last one ended.
    static const ScriptOutcome &outcome();
    /// Prints the pending error of the interpreter, or notes that the script ended itself. Interrupts wait
    /// for the end of the report; where code of the script has its part in it they do not, and the error is
    /// reported without that code when it was interrupted.
    static void reportPendingError();
    /// Makes interrupts possible; called once, when the interpreter is up.
    static void installInterrupt();

private:
    void openGroups();
    bool hasGroupOf(const UndoManager *manager) const;

    OperationScope::Pause m_pause; ///< an operation that runs scripts, like runMacroFile
    QString m_undoName;
    bool m_isRefused = false;
    /// A history, and how many groups were open in it.
    std::vector<std::pair<QPointer<UndoManager>, int>> m_groups;
};

/// What the interpreter still has to do when the process is about to end: threads of scripts that are not
/// daemons come to their end, functions registered with atexit run, "__main__" and the modules of scripts are
/// emptied so that what they held is closed, and files that are open all the same are written out. No script
/// may run after it.
void finishScripts();

} // namespace runebook
