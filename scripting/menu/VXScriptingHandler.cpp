#include "scripting/menu/VXScriptingHandler.h"

#include "platform/Error.h"
#include "platform/NotificationCenter.h"
#include "scripting/classes/ScriptHelpers.h"
#include "scripting/components/Components.h"
#include "scripting/menu/HandlerOperations.h"
#include "scripting/menu/InterpreterStart.h"
#include "scripting/menu/MenuSettings.h"
#include "scripting/menu/ScriptFolders.h"
#include "scripting/menu/ScriptMenu.h"
#include "scripting/menu/StartWarning.h"
#include "scripting/python/PythonDiscovery.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonProbe.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"

#include <QDesktopServices>
#include <QDir>
#include <QPointer>
#include <QTimer>
#include <QUrl>

using namespace runebook;
using namespace Qt::StringLiterals;

int VXScriptingHandler::PythonMajorVersion = -1;
int VXScriptingHandler::PythonMinorVersion = -1;

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
    : QObject(parent), m_places(std::move(places)), m_menu(new ScriptMenu(this))
{
    connect(m_menu, &ScriptMenu::scriptChosen, this, &VXScriptingHandler::runMacroFile);
    connect(m_menu, &ScriptMenu::folderRequested, this, &VXScriptingHandler::showScriptFolder);
    connect(m_menu, &ScriptMenu::reloadRequested, this, &VXScriptingHandler::reloadScriptMenu);
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
    QString chosen = Settings::kPythonLibrary.value();
    if (!chosen.isEmpty())
        return chosen;
    return m_pythonFrameworks.isEmpty() ? QString() : m_pythonFrameworks.last()[u"fullPath"_s].toString();
}

// The library

void *VXScriptingHandler::pythonLibForPath(const QString &path) const
{
    return InterpreterStart::openLibrary(path);
}

void VXScriptingHandler::loadPythonFunctions()
{
    if (void *library = pythonLibForPath(currentPythonPath()))
        resolvePythonFunctions(library);
}

// Starting it

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
    using InterpreterStart::Streams;
    registerComponents();
    registerHandlerOperations(staticMetaObject, []() -> QObject * { return sharedHandler(); });
    InterpreterStart::start(pythonPrefix(path),
                            Settings::kKeepsStandardStreams.value() ? Streams::Kept : Streams::Replaced,
                            [](InterpreterStart::Version version) {
                                PythonMajorVersion = version.major;
                                PythonMinorVersion = version.minor;
                                return scriptPaths();
                            });
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
    return ScriptFolders::applicationSupportFolder();
}

QString VXScriptingHandler::applicationSupportPath()
{
    return ScriptFolders::applicationSupportPath();
}

void VXScriptingHandler::linkScriptFolder()
{
    ScriptFolders::link();
}

QStringList VXScriptingHandler::scriptPaths()
{
    static QStringList paths;
    if (!paths.isEmpty() || PythonMajorVersion < 3)
        return paths;
    // The list is made once: the folder that the user is pointed to has to be there by then.
    if (ScriptHelpers::shared().canAsk())
        QDir().mkpath(ScriptFolders::shown());
    paths = ScriptFolders::present(PythonMajorVersion, PythonMinorVersion);
    return paths;
}

bool VXScriptingHandler::validateScript(const QString &)
{
    return false;
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

// The Scripts menu

QMenu *VXScriptingHandler::scriptMenu()
{
    return m_menu->menu();
}

QAction *VXScriptingHandler::runAgainMenuItem()
{
    return m_menu->runAgainItem();
}

void VXScriptingHandler::setupScriptMenu()
{
    m_menu->wire();
    reloadScriptMenu();
}

void VXScriptingHandler::reloadScriptMenu()
{
    auto *panel = dynamic_cast<ScriptConsole *>(globalMacroPanelController());
    if (!panel)
        return;
    panel->clearConsole(this);
    m_menu->reload(scriptPaths(), *panel);
}

void VXScriptingHandler::addScriptsFromFolderSubFolder(const QString &folder, const QString &subFolder)
{
    m_menu->addFolder(folder, subFolder);
}

void VXScriptingHandler::addScriptMenuItemWithBasePathSubFolder(const QString &fileName,
                                                                const QString &basePath,
                                                                const QString &subFolder)
{
    m_menu->addScript(fileName, basePath, subFolder);
}

QVariantMap VXScriptingHandler::scriptPathDict()
{
    return ScriptMenu::paths();
}

bool VXScriptingHandler::isScriptMenuOutdated() const
{
    return m_menu->isOutdated();
}

void VXScriptingHandler::runScriptMenu(QAction *item)
{
    m_menu->choose(item);
}

bool VXScriptingHandler::setupRunAgainMenuItem()
{
    return m_menu->setUpRunAgain();
}

bool VXScriptingHandler::validateMenuItem(QAction *item)
{
    return m_menu->validate(item);
}

void VXScriptingHandler::showScriptFolder()
{
    QDir().mkpath(ScriptFolders::shown());
    ScriptFolders::link();
    QDesktopServices::openUrl(QUrl::fromLocalFile(ScriptFolders::shown()));
}
