#include "scripting/menu/VXScriptingHandler.h"

#include "platform/Error.h"
#include "platform/NotificationCenter.h"
#include "scripting/menu/MenuSettings.h"
#include "scripting/menu/ScriptFolderWatcher.h"
#include "scripting/python/PythonDiscovery.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonProbe.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"

#include <QFile>
#include <QFileInfo>
#include <dlfcn.h>

using namespace runebook;
using namespace Qt::StringLiterals;

VXScriptingHandler *VXScriptingHandler::sharedHandler()
{
    // Not destroyed: what scripts hold may speak to it to the very end.
    static VXScriptingHandler *const handler = [] {
        PythonPlaces places = PythonPlaces::ofThisMachine();
        places.pluginFramework =
            applicationSupportPath() + "/Repositories/TesselPythonPlugin/Python.framework"_L1;
        return new VXScriptingHandler(places);
    }();
    static VXScriptingHandler *const started = handler->initOnce();
    return started;
}

VXScriptingHandler::VXScriptingHandler(PythonPlaces places, QObject *parent)
    : QObject(parent), m_places(std::move(places))
{
    // What a script's own save loses stands among the script's output, too.
    connect(&ErrorPresenter::shared(), &ErrorPresenter::presented, this, [](const Error &error) {
        ScriptConsole *console = hasOwnOutput() ? nullptr : scriptConsole();
        if (console && ScriptRun::isRunning() && error.domain == "SavingLossesError"_L1)
            console->setWriteError(error.text() + u'\n');
    });
}

VXScriptingHandler::~VXScriptingHandler() = default;

VXScriptingHandler *VXScriptingHandler::initOnce()
{
    findAllPythonFrameworks();
    if (isUsable(currentPythonPath())) {
        loadPythonFunctions();
        initPython();
    }
    NotificationCenter::defaultCenter().observe(u"VXReloadScriptMenu"_s, this,
                                                [this](QObject *, const QVariantMap &) {
                                                    reloadScriptMenu();
                                                    Q_EMIT scriptMenuReloadRequested();
                                                });
    return this;
}

/// Tries the interpreter out in another process before it is let into this one.
bool VXScriptingHandler::isUsable(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QString library =
        isPythonLibraryName(path) || path.endsWith("Python"_L1) ? path : path + "/Python"_L1;
    return PythonProbe::comesUp(library, pythonPrefix(path), &m_startError);
}

// Installations

void VXScriptingHandler::setPythonFrameworks(const QList<QVariantMap> &frameworks)
{
    m_pythonFrameworks = frameworks;
}

void VXScriptingHandler::findAllPythonFrameworks()
{
    m_pythonFrameworks = PythonDiscovery(m_places).find(Settings::kPythonLibrary.value());
}

QStringList VXScriptingHandler::allFrameworkPaths(const QString &path) const
{
    return PythonDiscovery(m_places).allFrameworkPaths(path);
}

QStringList VXScriptingHandler::allVersionsOfFramework(const QString &path) const
{
    return PythonDiscovery(m_places).allVersionsOfFramework(path);
}

bool VXScriptingHandler::isSupportedPythonVersion(const QString &path, QString *version) const
{
    return PythonDiscovery::isSupported(path, version);
}

bool VXScriptingHandler::isSupportedPythonVersion(const QString &version) const
{
    return PythonDiscovery::isSupportedVersion(version);
}

QString VXScriptingHandler::currentPythonPath() const
{
    const QString chosen = Settings::kPythonLibrary.value();
    if (!chosen.isEmpty())
        return chosen;
    return m_pythonFrameworks.isEmpty() ? QString() : m_pythonFrameworks.last()[u"fullPath"_s].toString();
}

// The library

void *VXScriptingHandler::pythonLibForPath(const QString &path) const
{
    if (path.isEmpty())
        return nullptr;
    const bool isLibrary = isPythonLibraryName(path) || path.endsWith("Python"_L1);
    const QByteArray library = QFile::encodeName(isLibrary ? path : path + "/Python"_L1);
    // Global: on ELF systems extension modules take the interpreter's symbols from the global scope.
    return ::dlopen(library.constData(), RTLD_LAZY | RTLD_GLOBAL);
}

void VXScriptingHandler::loadPythonFunctions()
{
    if (void *library = pythonLibForPath(currentPythonPath()))
        resolvePythonFunctions(library);
}

// Runs

void VXScriptingHandler::runMacroFile(const QString &path)
{
    runScriptFile(path);
}

void VXScriptingHandler::runMacroString(const QString &code)
{
    runPanelCode(code);
}

void VXScriptingHandler::interruptRun()
{
    ScriptRun::interrupt();
}

// The macro panel

namespace {

QPointer<QObject> &registeredPanel()
{
    static QPointer<QObject> panel;
    return panel;
}

} // namespace

QObject *VXScriptingHandler::globalMacroPanelController()
{
    return registeredPanel();
}

void VXScriptingHandler::setMacroPanelController(QObject *panel)
{
    auto *console = dynamic_cast<ScriptConsole *>(panel);
    if (panel && !console) {
        qWarning("%s shows no text of scripts: it cannot be the macro panel",
                 panel->metaObject()->className());
        return;
    }
    if (registeredPanel())
        disconnect(registeredPanel(), &QObject::destroyed, this, nullptr);
    registeredPanel() = panel;
    setPanelConsole(console);
    if (panel)
        connect(panel, &QObject::destroyed, this, [] { setPanelConsole(nullptr); });
}
