#include "scripting/python/ScriptRunEntries.h"

#include "platform/Error.h"
#include "scripting/python/ErrorReport.h"
#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptRun.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <cstdio>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr char kPanelLabel[] = "macro panel";
constexpr char kPanelPrelude[] =
    "import sys, objc\n"
    "from AppKit import NSApplication, NSObject, NSDocumentController\n"
    "from Foundation import NSObject, NSString, NSMutableArray, NSConcreteValue, NSClassFromString, "
    "NSUserDefaults, NSURL, NSNotificationCenter, NSNotFound, NSWorkspace\n"
    "from MainApp import *\n"
    "Doc = NSApplication.sharedApplication().orderedDocuments().firstObject()\n";

constexpr char kFilePrelude[] =
    "import sys, objc, os\n"
    "from AppKit import NSApplication, NSObject, NSDocumentController\n"
    "from Foundation import NSClassFromString, NSConcreteValue, NSMutableArray, NSNotFound, "
    "NSNotificationCenter, NSObject, NSString, NSURL, NSUserDefaults, NSWorkspace\n"
    "from MainApp import *\n"
    "Doc = NSApplication.sharedApplication().orderedDocuments().firstObject()\n";

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ScriptRun)
};

/// What escaped from the program's own objects while a script ran.
void present(const char *reason)
{
    ErrorPresenter::shared().present({u"VXTesselDomain"_s, 1, QString::fromLocal8Bit(reason), {}, {}});
    qWarning("Error while running Script: %s", reason);
}

struct FileClose {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileClose>;

/// Puts \a folder at the end of sys.path unless it is there.
void addToSearchPath(const QByteArray &folder)
{
    PyObject *path = vxPySys_GetObject("path");
    if (path)
        py.Py_IncRef(path); // comparing may run code that puts another list in its place
    PyObject *text = vxPyString_FromString(folder.constData());
    if (path && text && vxPySequence_Contains(path, text) == 0)
        vxPyList_Append(path, text);
    for (PyObject *object : {text, path}) {
        if (object)
            vxPy_DecRef(object);
    }
    vxPyErr_Clear();
}

/// Runs an open file in "__main__" with "__file__" set for the time.
void runOpenFile(std::FILE *file, const QByteArray &path)
{
    const MainNamespace names;
    PyObject *globals = names.get();
    if (!globals) {
        ScriptRun::reportPendingError();
        return;
    }
    PyObject *name = vxPyString_FromString(path.constData());
    if (name) {
        py.PyDict_SetItemString(globals, "__file__", name);
        vxPy_DecRef(name);
    }
    // Not the entry point that prints errors by itself: it ends the process on SystemExit.
    PyObject *result =
        py.PyRun_FileExFlags(file, path.constData(), python::kFileInput, globals, globals, 0, nullptr);
    if (result)
        vxPy_DecRef(result);
    else
        ScriptRun::reportPendingError();
    if (py.PyDict_DelItemString(globals, "__file__") != 0)
        vxPyErr_Clear();
}

} // namespace

/// What is run before the user's code. False when it was interrupted: then nobody wants the rest.
static bool runBefore(const char *code, const char *label)
{
    return vxRun_SimpleString(code, label) || !ScriptRun::outcome().wasInterrupted;
}

static void runText(const QString &code, const char *label)
{
    if (code.contains(QChar(0))) {
        // The compiler reads up to the zero and would run half of the code.
        py.PyErr_SetString(*py.PyExc_ValueError, "source code string cannot contain null bytes");
        ScriptRun::reportPendingError();
        return;
    }
    const QByteArray source = code.toUtf8();
    const ErrorReport::Source shown(label, source);
    vxRun_SimpleString(source.constData(), label);
}

void runStandardInput(const QString &code)
{
    if (!vxPyGILState_Ensure)
        return;
    try {
        const PythonLock lock;
        const ScriptRun run(Texts::tr("Macro"));
        if (runBefore(kFilePrelude, "runMacroFile"))
            runText(code, "<stdin>");
    } catch (const std::exception &exception) {
        present(exception.what());
    } catch (...) {
        present("an exception of the program");
    }
}

bool runPanelPrelude()
{
    return runBefore(kPanelPrelude, "<internal>");
}

void runPanelCode(const QString &code, const QString &name)
{
    if (!vxPyGILState_Ensure)
        return;
    try {
        const PythonLock lock;
        const ScriptRun run(name.isEmpty() ? Texts::tr("Macro") : name);
        if (run.isRefused())
            return;
        if (runPanelPrelude())
            runText(code, kPanelLabel);
    } catch (const std::exception &exception) {
        present(exception.what());
    } catch (...) {
        present("an exception of the program");
    }
}

void runScriptFile(const QString &path)
{
    const QByteArray encodedPath = QFile::encodeName(path);
    const FilePtr file(std::fopen(encodedPath.constData(), "r"));
    if (!file || !vxPyGILState_Ensure)
        return;
    const QByteArray folder = path.section(u'/', 0, -2).toUtf8();
    try {
        const PythonLock lock;
        const ScriptRun run(QFileInfo(path).completeBaseName());
        if (run.isRefused())
            return;
        addToSearchPath(folder);
        // The folder as it stands: one with a double quote in its name makes this line fail, not the script.
        const QByteArray change = "os.chdir(\"" + folder + "\")\n";
        if (runBefore(kFilePrelude, "runMacroFile") && runBefore(change.constData(), "NULL"))
            runOpenFile(file.get(), encodedPath);
    } catch (const std::exception &exception) {
        present(exception.what());
    } catch (...) {
        present("an exception of the program");
    }
}

} // namespace runebook
