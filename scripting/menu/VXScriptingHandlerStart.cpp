#include "platform/StandardFolders.h"
#include "scripting/classes/BridgeModule.h"
#include "scripting/classes/ScriptHelpers.h"
#include "scripting/components/Components.h"
#include "scripting/menu/HandlerOperations.h"
#include "scripting/menu/MenuSettings.h"
#include "scripting/menu/StartWarning.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/ForkedProcess.h"
#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonDiscovery.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptRun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <csignal>
#include <dlfcn.h>

using namespace runebook;
using namespace Qt::StringLiterals;

// Starting the interpreter, and the folders it finds scripts in.

int VXScriptingHandler::PythonMajorVersion = -1;
int VXScriptingHandler::PythonMinorVersion = -1;

namespace {

constexpr int kLockedState = 0;

QString userSupport()
{
    const QString folder = StandardFolders::applicationSupport().value(0);
    return folder.isEmpty() ? QDir::tempPath() : folder;
}

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

void readVersion()
{
    const char *text = vxPy_GetVersion();
    if (!text
        || std::sscanf(text, "%d.%d", &VXScriptingHandler::PythonMajorVersion,
                       &VXScriptingHandler::PythonMinorVersion)
            != 2)
        VXScriptingHandler::PythonMajorVersion = VXScriptingHandler::PythonMinorVersion = -1;
}

void insertScriptPaths(PyObject *searchPath)
{
    if (!searchPath || !vxPyString_FromString || !vxPyList_Insert)
        return;
    Py_ssize_t place = 0;
    for (const QString &folder : VXScriptingHandler::scriptPaths()) {
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

} // namespace

void VXScriptingHandler::initPython()
{
    if (!vxPyImport_AppendInittab || isPythonRunning())
        return;
    const QString path = currentPythonPath();
    if (path.isEmpty())
        return;
    const QStringList missing = missingPythonFunctions();
    if (!missing.isEmpty()) {
        m_startError = {u"PythonError"_s, 2, tr("The Python at “%1” cannot be used.").arg(path),
                        tr("It lacks %1.").arg(missing.first()), tr("Choose another one.")};
        clearPythonFunctions();
        return;
    }
    startInterpreter(path);
    warnWhenUnsupported();
}

bool VXScriptingHandler::isPythonRunning()
{
    return PythonMajorVersion >= 0;
}

QString VXScriptingHandler::missingPythonText() const
{
    if (isPythonRunning())
        return {};
    const auto minor = [](const char *version) { return QString::fromLatin1(version).section(u'.', 0, 1); };
    const QString range =
        tr("Scripts need Python %1 to %2.")
            .arg(minor(PythonDiscovery::kOldestVersion), minor(PythonDiscovery::kNewestVersion));
    const QString advice =
        tr("Install one, on Debian the package “libpython3.11”, or choose a library in the "
           "preferences; then start Runebook again.");
    if (!m_startError.domain.isEmpty())
        return QStringList {m_startError.text(), range + u' ' + advice}.join(u'\n');
    const QString searched = tr("Searched: %1").arg(m_places.libraryFolders().join(u", "_s));
    return QStringList {tr("No suitable Python was found.") + u' ' + range + u' ' + advice, searched}.join(
        u'\n');
}

void VXScriptingHandler::startInterpreter(const QString &path)
{
    const bool replacesStreams = !Settings::kKeepsStandardStreams.value();
    if (replacesStreams) {
        vxPyImport_AppendInittab("TesselOut", PyInit_TesselOut);
        vxPyImport_AppendInittab("TesselErr", PyInit_TesselErr);
    }
    registerComponents();
    registerHandlerOperations();
    vxPyImport_AppendInittab(kBridgeModuleName, PyInit_runebook);
    initialize(pythonPrefix(path));
    const int state = vxPyGILState_Ensure();
    setUpInterpreter(replacesStreams);
    vxPyGILState_Release(state);
    if (state == kLockedState)
        vxPyEval_SaveThread();
}

void VXScriptingHandler::setUpInterpreter(bool replacesStreams)
{
    if (replacesStreams) {
        import("TesselOut");
        import("TesselErr");
    }
    PyObject *searchPath = vxPySys_GetObject("path");
    readVersion();
    insertScriptPaths(searchPath);
    vxRun_SimpleString(kOwnPlaces, "<internal>");
    if (replacesStreams) {
        // The modules stay as they are; what libraries ask of a stream stands in a class of its own.
        vxRun_SimpleString("import runebook_streams as _s\n_s.install()\ndel _s\n", "<internal>");
        if (ScriptHelpers::shared().canAsk())
            vxRun_SimpleString("import runebook_streams as _s\n_s.installInput()\ndel _s\n", "<internal>");
    }
    vxPyErr_Clear();
}

void VXScriptingHandler::warnWhenUnsupported()
{
    const QString version = u"%1.%2"_s.arg(PythonMajorVersion).arg(PythonMinorVersion);
    if (isSupportedPythonVersion(version))
        return;
    const QString message = tr("The installed Python is not supported. You have version %1. "
                               "Versions from %2 to %3 are supported")
                                .arg(version, QString::fromLatin1(PythonDiscovery::kOldestVersion),
                                     QString::fromLatin1(PythonDiscovery::kNewestVersion));
    const QString advice = tr("Please install a supported version or use the Python module from Plugin "
                              "Manager");
    QTimer::singleShot(kStartWarningDelayMs, this,
                       [this, message, advice] { Q_EMIT unsupportedPythonStarted(message, advice); });
}

// Folders

QString VXScriptingHandler::applicationSupportFolder()
{
    return userSupport() + "/runebook"_L1;
}

QString VXScriptingHandler::applicationSupportPath()
{
    return QDir::cleanPath(userSupport() + u'/' + applicationSupportFolder());
}

void VXScriptingHandler::linkScriptFolder()
{
    const QString shown = applicationSupportFolder() + "/Scripts"_L1;
    const QString searched = applicationSupportPath() + "/Scripts"_L1;
    if (!QFileInfo(shown).isDir() || QFileInfo::exists(searched) || QFileInfo(searched).isSymLink())
        return;
    QDir().mkpath(applicationSupportPath());
    QFile::link(shown, searched);
}

QStringList VXScriptingHandler::scriptPaths()
{
    static QStringList paths;
    if (!paths.isEmpty() || PythonMajorVersion < 3)
        return paths;
    // The list is made once: the folder that the user is pointed to has to be there by then.
    if (ScriptHelpers::shared().canAsk())
        QDir().mkpath(applicationSupportFolder() + "/Scripts"_L1);
    linkScriptFolder();
    paths << StandardFolders::programData()
            + u"/Contents/Scripts%1%2"_s.arg(PythonMajorVersion).arg(PythonMinorVersion);
    const QStringList supportFolders = StandardFolders::applicationSupport();
    for (const auto below : {"/Scripts"_L1, "/Scripts/site-packages"_L1}) {
        for (const QString &folder : supportFolders) {
            const QString scripts = QDir::cleanPath(folder + u'/' + applicationSupportFolder()) + below;
            if (QFileInfo(scripts).isDir())
                paths << scripts;
        }
    }
    const QString usersOwn = applicationSupportPath() + "/Scripts"_L1;
    if (QFileInfo(usersOwn + "/TesselApp"_L1).isDir()) {
        paths.removeAll(usersOwn);
        paths.prepend(usersOwn);
    }
    return paths;
}

bool VXScriptingHandler::validateScript(const QString &)
{
    return false;
}
