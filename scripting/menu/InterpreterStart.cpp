#include "scripting/menu/InterpreterStart.h"

#include "scripting/classes/BridgeModule.h"
#include "scripting/classes/ScriptHelpers.h"
#include "scripting/python/ForkedProcess.h"
#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonPlaces.h"
#include "scripting/python/ScriptRun.h"

#include <QFile>
#include <csignal>
#include <dlfcn.h>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

constexpr int kLockedState = 0;

/// One of the interpreter's variables that are read when it starts; missing ones are left alone.
void setStartFlag(const char *name, int value)
{
    if (auto *flag = static_cast<int *>(::dlsym(RTLD_DEFAULT, name)))
        *flag = value;
}

/// Starts the interpreter with \a prefix as its home, without leaving a trace of it in the environment.
void initialize(const QString &prefix)
{
    // Texts are UTF-8 whatever the locale says: glyph data is.
    setStartFlag("Py_UTF8Mode", 1);
    // The interpreter installs its answer to Ctrl+C only where nobody has another one.
    struct sigaction own {
    };
    struct sigaction plain {
    };
    plain.sa_handler = SIG_DFL;
    sigemptyset(&plain.sa_mask);
    ::sigaction(SIGINT, &plain, &own);
    qputenv("PYTHONHOME", QFile::encodeName(prefix));
    vxPy_Initialize();
    qunsetenv("PYTHONHOME");
    ScriptRun::installInterrupt();
    watchForks();
    ::sigaction(SIGINT, &own, nullptr);
}

InterpreterStart::Version readVersion()
{
    InterpreterStart::Version version;
    const char *text = vxPy_GetVersion();
    if (!text || std::sscanf(text, "%d.%d", &version.major, &version.minor) != 2)
        return {};
    return version;
}

void insertScriptPaths(PyObject *searchPath, const QStringList &folders)
{
    if (!searchPath || !vxPyString_FromString || !vxPyList_Insert)
        return;
    Py_ssize_t place = 0;
    for (const QString &folder : folders) {
        PyObject *text = vxPyString_FromString(folder.toUtf8().constData());
        if (!text)
            continue;
        if (vxPyList_Insert(searchPath, place, text) == 0)
            ++place;
        vxPy_DecRef(text);
    }
}

// An interpreter inside of a program takes the first "python3" in the search path for its own, which may well
// be another version: multiprocessing and subprocess would start that.
constexpr char kOwnPlaces[] =
    "import os as _os, sys as _sys\n"
    "_os.environ.pop('PYTHONHOME', None)\n"
    "_own = _os.path.join(_sys.exec_prefix, 'bin', 'python%d.%d' % _sys.version_info[:2])\n"
    "if _os.access(_own, _os.X_OK): _sys.executable = _sys._base_executable = _own\n"
    "del _os, _sys, _own\n";

void import(const char *module)
{
    if (PyObject *imported = vxPyImport_ImportModule(module))
        vxPy_DecRef(imported);
}

void setUp(InterpreterStart::Streams streams, const InterpreterStart::FoldersFor &foldersFor)
{
    if (streams == InterpreterStart::Streams::Replaced) {
        import("TesselOut");
        import("TesselErr");
    }
    PyObject *searchPath = vxPySys_GetObject("path");
    insertScriptPaths(searchPath, foldersFor(readVersion()));
    vxRun_SimpleString(kOwnPlaces, "<internal>");
    if (streams == InterpreterStart::Streams::Replaced) {
        // The modules stay as they are; what libraries ask of a stream stands in a class of its own.
        vxRun_SimpleString("import runebook_streams as _s\n_s.install()\ndel _s\n", "<internal>");
        if (ScriptHelpers::shared().canAsk())
            vxRun_SimpleString("import runebook_streams as _s\n_s.installInput()\ndel _s\n", "<internal>");
    }
    vxPyErr_Clear();
}

} // namespace

void *InterpreterStart::openLibrary(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    const bool isLibrary = isPythonLibraryName(path) || path.endsWith("Python"_L1);
    const QByteArray library = QFile::encodeName(isLibrary ? path : path + "/Python"_L1);
    // Global: on ELF systems extension modules take the interpreter's symbols from the global scope.
    return ::dlopen(library.constData(), RTLD_LAZY | RTLD_GLOBAL);
}

void InterpreterStart::start(const QString &prefix, Streams streams, const FoldersFor &foldersFor)
{
    if (streams == Streams::Replaced) {
        vxPyImport_AppendInittab("TesselOut", PyInit_TesselOut);
        vxPyImport_AppendInittab("TesselErr", PyInit_TesselErr);
    }
    vxPyImport_AppendInittab(kBridgeModuleName, PyInit_runebook);
    initialize(prefix);
    const int state = vxPyGILState_Ensure();
    setUp(streams, foldersFor);
    vxPyGILState_Release(state);
    if (state == kLockedState)
        vxPyEval_SaveThread();
}

} // namespace runebook
