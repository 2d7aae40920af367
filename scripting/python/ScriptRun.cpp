#include "scripting/python/ScriptRun.h"

#include "platform/documents/Document.h"
#include "platform/documents/DocumentController.h"
#include "scripting/python/ErrorReport.h"
#include "scripting/python/ForkedProcess.h"
#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptsEnd.h"

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <unistd.h>

using namespace runebook;
using namespace Qt::StringLiterals;

static bool runCode(const char *code, const char *label, int start)
{
    PyObject *compiled = vxPy_CompileStringFlags(code, label, start, nullptr);
    if (compiled) {
        const MainNamespace globals;
        PyObject *result =
            globals.get() ? vxPyEval_EvalCode(compiled, globals.get(), globals.get()) : nullptr;
        vxPy_DecRef(compiled);
        if (result) {
            vxPy_DecRef(result);
            return true;
        }
    }
    ScriptRun::reportPendingError();
    return false;
}

bool vxRun_SimpleString(const char *code, const char *label)
{
    return runCode(code, label, python::kFileInput);
}

bool vxRun_Line(const char *code, const char *label)
{
    return runCode(code, label, python::kSingleInput);
}

namespace runebook {

MainNamespace::MainNamespace()
{
    PyObject *module = vxPyImport_AddModule("__main__");
    m_dictionary = module ? vxPyModule_GetDict(module) : nullptr;
    if (m_dictionary)
        py.Py_IncRef(m_dictionary);
}

MainNamespace::~MainNamespace()
{
    if (m_dictionary)
        vxPy_DecRef(m_dictionary);
}

namespace {

/// The error that ends the run, on its way from code that the program called to the script.
struct KeptEnd {
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
};
KeptEnd keptEnd;

ScriptOutcome lastOutcome;
std::atomic<int> runDepth = 0;
pthread_t mainThread;
RunObserver *runObserver = nullptr;
QString runName;
bool raisesAtEveryLine = false;
std::atomic<bool> holdsInterrupts = false;
std::atomic<int> interrupts = 0; ///< counts requests to end the run
// The interpreter's own answer to Ctrl+C, in force during runs only: outside of them it would swallow the
// key that ends the program.
struct sigaction pythonInterrupt {
};
struct sigaction ordinaryInterrupt {
};

int interruptSignal()
{
    return SIGRTMIN + 5;
}

void onInterruptSignal(int)
{
    if (runDepth > 0 && !holdsInterrupts)
        py.PyErr_SetInterrupt();
}

/// Called by the interpreter at every line once a run is to end for good.
int raiseAtEveryLine(PyObject *, PyObject *, int what, PyObject *)
{
    constexpr int kCall = 0, kLine = 2;
    if (what != kCall && what != kLine)
        return 0;
    py.PyErr_SetObject(*py.PyExc_KeyboardInterrupt, py._Py_NoneStruct);
    return -1;
}

/// Drops an interrupt that came when the script had ended already.
void dropLateInterrupt()
{
    if (py.PyErr_CheckSignals() != 0)
        vxPyErr_Clear();
}

void endInterruptForGood()
{
    if (!std::exchange(raisesAtEveryLine, false))
        return;
    vxPyEval_SetTrace(nullptr, nullptr);
    // One more may be on its way, which would hit the report of the first.
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    vxPyErr_Fetch(&type, &value, &traceback);
    dropLateInterrupt();
    py.PyErr_Restore(type, value, traceback);
}

/// For one scope nothing interrupts; what came before is dropped. No code of a script may run in it.
class InterruptHold
{
public:
    InterruptHold()
    {
        holdsInterrupts = true;
        struct sigaction ignored {
        };
        ignored.sa_handler = SIG_IGN;
        ::sigaction(SIGINT, &ignored, &m_before);
        dropLateInterrupt();
    }
    ~InterruptHold()
    {
        ::sigaction(SIGINT, &m_before, nullptr);
        holdsInterrupts = false;
    }
    Q_DISABLE_COPY_MOVE(InterruptHold)

private:
    struct sigaction m_before {
    };
};

/// Ctrl+C in the terminal ends the run, where it would end the process otherwise. A program with windows has
/// its own way of going.
void takeInterruptKey()
{
    ::sigaction(SIGINT, nullptr, &ordinaryInterrupt);
    if (ordinaryInterrupt.sa_handler == SIG_DFL || ordinaryInterrupt.sa_handler == SIG_IGN)
        ::sigaction(SIGINT, &pythonInterrupt, nullptr);
}

void flushStreams()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    vxPyErr_Fetch(&type, &value, &traceback);
    for (const char *name : {"stdout", "stderr"}) {
        PyObject *stream = vxPySys_GetObject(name);
        if (!stream || stream == py._Py_NoneStruct)
            continue;
        // A flush of a script's own may put another stream in its place.
        py.Py_IncRef(stream);
        PyObject *result = vxPyObject_CallMethod(stream, "flush", nullptr);
        for (PyObject *object : {result, stream}) {
            if (object)
                vxPy_DecRef(object);
        }
        vxPyErr_Clear();
    }
    py.PyErr_Restore(type, value, traceback);
}

/// Takes SystemExit as the interpreter's main program would: no value is 0, a number is itself, anything
/// else is a text for sys.stderr and 1.
int statusOfSystemExit()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    vxPyErr_Fetch(&type, &value, &traceback);
    vxPyErr_NormalizeException(&type, &value, &traceback);
    PyObject *code = value ? py.PyObject_GetAttrString(value, "code") : nullptr;
    int status = 0;
    if (code && code != py._Py_NoneStruct) {
        if (py.PyType_GetFlags(code->ob_type) & python::kLongSubclass) {
            status = static_cast<int>(py.PyLong_AsLongLong(code));
        } else {
            status = 1;
            PyObject *text = vxPyObject_Str(code);
            PyObject *stream = vxPySys_GetObject("stderr");
            if (stream)
                py.Py_IncRef(stream);
            PyObject *result = text && stream ? vxPyObject_CallMethod(stream, "write", "(O)", text) : nullptr;
            PyObject *end = result ? vxPyObject_CallMethod(stream, "write", "(s)", "\n") : nullptr;
            for (PyObject *object : {text, result, end, stream}) {
                if (object)
                    vxPy_DecRef(object);
            }
        }
    }
    for (PyObject *object : {code, type, value, traceback}) {
        if (object)
            vxPy_DecRef(object);
    }
    vxPyErr_Clear();
    return status;
}

} // namespace

/// Runs code of the program's own with names that no script can reach.
static void runApart(const char *code)
{
    PyObject *names = vxPyDict_New();
    PyObject *builtins = names ? vxPyImport_ImportModule("builtins") : nullptr;
    if (builtins)
        py.PyDict_SetItemString(names, "__builtins__", builtins);
    PyObject *compiled =
        builtins ? vxPy_CompileStringFlags(code, "<internal>", python::kFileInput, nullptr) : nullptr;
    PyObject *result = compiled ? vxPyEval_EvalCode(compiled, names, names) : nullptr;
    if (!result)
        ScriptRun::reportPendingError();
    for (PyObject *object : {result, compiled, builtins, names}) {
        if (object)
            vxPy_DecRef(object);
    }
}

void finishScripts()
{
    if (!vxPyGILState_Ensure)
        return;
    {
        const PythonLock lock;
        for (const char *part : codeOfScriptsEnd())
            runApart(part);
    }
    deliverPendingOutput();
}

/// Where the script of a forked process ends, the process does: saving, windows and whatever else comes after
/// a script are up to the process that it was copied from.
[[noreturn]] static void endForkedProcess()
{
    flushStreams();
    finishScripts();
    ::_exit(lastOutcome.processStatus());
}

PythonLock::PythonLock() : m_state(vxPyGILState_Ensure()) { }

PythonLock::~PythonLock()
{
    vxPyGILState_Release(m_state);
}

ScriptRun::ScriptRun(const QString &undoName) : m_undoName(undoName)
{
    if (runDepth > 0) {
        ++runDepth;
        return;
    }
    lastOutcome = {};
    runName = undoName;
    dropLateInterrupt();
    Error refusal;
    if (!DocumentController::shared().commitEditing(&refusal)) {
        m_isRefused = true;
        lastOutcome.hasFailed = true;
        ErrorPresenter::shared().present(refusal);
        return;
    }
    DocumentController::shared().autosaveBeforeRun();
    openGroups();
    for (UndoManager *manager : UndoManager::withOpenGroups()) {
        if (!hasGroupOf(manager))
            m_groups.emplace_back(manager, manager->groupingLevel());
    }
    // Documents that the script opens get their step as well.
    connect(&DocumentController::shared(), &DocumentController::documentsChanged, this,
            &ScriptRun::openGroups);
    takeInterruptKey();
    ++runDepth;
    if (runObserver)
        runObserver->scriptStarted();
}

ScriptRun::~ScriptRun()
{
    if (m_isRefused || --runDepth > 0)
        return;
    // Called by the program without the script in between, as a delegate is while windows are painted.
    if (raiseKeptEnd())
        reportPendingError();
    if (isForkedProcess())
        endForkedProcess();
    if (runObserver)
        runObserver->scriptEnded();
    endInterruptForGood();
    ::sigaction(SIGINT, &ordinaryInterrupt, nullptr);
    dropLateInterrupt();
    flushStreams();
    // The history of a document that is gone went with it.
    for (const auto &[manager, level] : m_groups) {
        // Also the groups that the script began and left open.
        while (manager && manager->groupingLevel() > level)
            manager->endUndoGrouping();
    }
    // And in documents that it keeps to itself.
    for (UndoManager *manager : UndoManager::withOpenGroups()) {
        while (!hasGroupOf(manager) && manager->groupingLevel() > 0)
            manager->endUndoGrouping();
    }
}

bool ScriptRun::hasGroupOf(const UndoManager *manager) const
{
    return std::any_of(m_groups.begin(), m_groups.end(),
                       [manager](const auto &group) { return group.first == manager; });
}

void ScriptRun::openGroups()
{
    for (Document *document : DocumentController::shared().documentList()) {
        UndoManager *manager = document->undoManager();
        if (hasGroupOf(manager))
            continue;
        // What stands open in a document that the script brings is the script's.
        m_groups.emplace_back(manager, isRunning() ? 0 : manager->groupingLevel());
        manager->beginUndoGrouping();
        manager->setActionName(m_undoName);
    }
}

bool ScriptRun::isRunning()
{
    return runDepth > 0;
}

QString ScriptRun::currentName()
{
    return isRunning() ? runName : QString();
}

void ScriptRun::interrupt()
{
    ++interrupts;
    if (runDepth > 0 && !holdsInterrupts)
        ::pthread_kill(mainThread, interruptSignal());
}

void ScriptRun::interruptForGood()
{
    if (runDepth == 0 || holdsInterrupts)
        return;
    raisesAtEveryLine = true;
    vxPyEval_SetTrace(raiseAtEveryLine, nullptr);
    interrupt();
}

bool ScriptRun::isInterruptedForGood()
{
    return raisesAtEveryLine;
}

bool ScriptRun::keepEnd()
{
    const bool endsScripts = runDepth > 0
        && (py.PyErr_ExceptionMatches(*py.PyExc_SystemExit)
            || py.PyErr_ExceptionMatches(*py.PyExc_KeyboardInterrupt));
    if (!endsScripts)
        return false;
    KeptEnd end;
    vxPyErr_Fetch(&end.type, &end.value, &end.traceback);
    // The first one counts.
    if (!keptEnd.type)
        std::swap(keptEnd, end);
    for (PyObject *object : {end.type, end.value, end.traceback}) {
        if (object)
            vxPy_DecRef(object);
    }
    return true;
}

bool ScriptRun::raiseKeptEnd()
{
    if (!keptEnd.type)
        return false;
    const KeptEnd end = std::exchange(keptEnd, {});
    py.PyErr_Restore(end.type, end.value, end.traceback);
    return true;
}

void ScriptRun::setObserver(RunObserver *observer)
{
    runObserver = observer;
}

const ScriptOutcome &ScriptRun::outcome()
{
    return lastOutcome;
}

void ScriptRun::reportPendingError()
{
    // Reporting may run lines of the script, such as its own sys.excepthook.
    endInterruptForGood();
    // Printing SystemExit would end the program.
    if (py.PyErr_ExceptionMatches(*py.PyExc_SystemExit)) {
        lastOutcome.exitStatus = statusOfSystemExit();
        return;
    }
    lastOutcome.hasFailed = true;
    lastOutcome.wasInterrupted = py.PyErr_ExceptionMatches(*py.PyExc_KeyboardInterrupt);
    ErrorReport report;
    if (ErrorReport::isUpToScript()) {
        const int before = interrupts;
        report.print();
        endInterruptForGood();
        if (interrupts == before)
            return;
        const InterruptHold hold;
        report.printPlainly();
        return;
    }
    const InterruptHold hold;
    report.print();
}

void ScriptRun::installInterrupt()
{
    mainThread = ::pthread_self();
    struct sigaction action {
    };
    action.sa_handler = onInterruptSignal;
    sigemptyset(&action.sa_mask);
    // No restart: a sleep or a wait for a lock must come back to look at the interrupt.
    action.sa_flags = 0;
    ::sigaction(interruptSignal(), &action, nullptr);
    ::sigaction(SIGINT, nullptr, &pythonInterrupt);
}

} // namespace runebook
