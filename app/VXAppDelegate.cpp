#include "app/VXAppDelegate.h"

#include "app/AboutBox.h"
#include "app/AppSettings.h"
#include "app/DocumentKinds.h"
#include "app/FileOpener.h"
#include "app/PresentedErrors.h"
#include "app/Session.h"
#include "app/StartWarnings.h"
#include "app/UnseenDocuments.h"
#include "app/UnseenOutput.h"
#include "app/VXApplication.h"
#include "app/VXChangeLogWindowController.h"
#include "app/VXPreferencesController.h"
#include "editing/compare/CompareDocuments.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/merge/MergeDialog.h"
#include "editing/problems/ProblemFixes.h"
#include "editing/problems/Problems.h"
#include "editing/window/ChangedOnDisk.h"
#include "editing/window/EditingClasses.h"
#include "editing/window/RecoveryPanel.h"
#include "model/VXArrayToStringTransformator.h"
#include "model/VXDirectionToIndexValueTransformer.h"
#include "platform/Appearance.h"
#include "platform/Curtain.h"
#include "platform/MainMenu.h"
#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/DocumentWindows.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"

#include <QBoxLayout>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QSessionManager>
#include <QUrl>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kUpdateDelayMs = 3'000;

} // namespace

VXAppDelegate::VXAppDelegate(QObject *parent)
    : QObject(parent),
      m_macroPanelController(new VXMacroWindowController(this)),
      m_fileOpener(new FileOpener(this))
{
    initialize();
    Appearance::shared().apply();
    Curtain::hang();
    registerDocumentKinds();
    contributeToMenus();
    new PresentedErrors(this);
    new UnseenOutput(*m_macroPanelController, this);
    introduceToScripts();
    new UnseenDocuments(this);
    // Closing the last window by hand leaves nothing to come back to.
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        if (!m_isSessionKept)
            Session::store({});
    });
    followSessionManager();
}

void VXAppDelegate::initialize()
{
    static const bool once = [] {
        ValueTransformer::setForName(u"arrayToStringTransformator"_s,
                                     std::make_unique<VXArrayToStringTransformator>());
        ValueTransformer::setForName(u"directionToIndexTransformer"_s,
                                     std::make_unique<VXDirectionToIndexValueTransformer>());
        ChangedOnDisk::registerDefaults();
        return true;
    }();
    Q_UNUSED(once)
}

void VXAppDelegate::introduceToScripts()
{
    ScriptApplication::shared().setDelegate(this);
    // Known by name before a script has met the first one.
    registerEditingClasses();
    bridge::BridgedClass::registerClass(VXPreferencesController::staticMetaObject);
    bridge::BridgedClass::registerClass(VXChangeLogWindowController::staticMetaObject);
}

void VXAppDelegate::contributeToMenus()
{
    using Command = void (VXAppDelegate::*)();
    const auto add = [this](MainMenu::Place place, const QString &text, const QKeySequence &shortcut,
                            Command command, QAction::MenuRole role = QAction::NoRole) {
        MainMenu::addContribution(place, [this, text, shortcut, command, role](QMenu &menu, QWidget &window) {
            QAction *action =
                MainMenu::addCommand(menu, window, text, [this, command] { (this->*command)(); });
            action->setShortcut(shortcut);
            action->setMenuRole(role);
        });
    };
    add(MainMenu::File, tr("Mer&ge…"), Qt::CTRL | Qt::SHIFT | Qt::Key_G, &VXAppDelegate::showMergeDialog);
    add(MainMenu::File, tr("&Quit"), Qt::CTRL | Qt::Key_Q, &VXAppDelegate::terminate, QAction::QuitRole);
    MainMenu::addContribution(MainMenu::Edit, [](QMenu &menu, QWidget &) { menu.addSeparator(); });
    add(MainMenu::Edit, tr("Prefere&nces…"), Qt::CTRL | Qt::Key_Comma, &VXAppDelegate::showMainPreferences,
        QAction::PreferencesRole);
    add(MainMenu::Window, tr("&Macro Panel"), Qt::CTRL | Qt::ALT | Qt::Key_M, &VXAppDelegate::showMacroPanel);
    add(MainMenu::Window, tr("&Compare Data"), Qt::CTRL | Qt::SHIFT | Qt::Key_C,
        &VXAppDelegate::showCompareWindow);
    add(MainMenu::Help, tr("&Scripting Documentation"), QKeySequence::HelpContents,
        &VXAppDelegate::showScriptingDocu);
    add(MainMenu::Help, tr("Change &Log"), {}, &VXAppDelegate::showChangeLogWindow);
    add(MainMenu::Help, tr("Check for &Updates…"), {}, &VXAppDelegate::checkForUpdates,
        QAction::ApplicationSpecificRole);
    MainMenu::addContribution(MainMenu::Help, [this](QMenu &menu, QWidget &window) {
        menu.addSeparator();
        QAction *about = MainMenu::addCommand(menu, window, tr("&About Runebook"),
                                              [this, &window] { showAbout(&window); });
        about->setMenuRole(QAction::AboutRole);
    });
}

void VXAppDelegate::followSessionManager()
{
    // What is unsaved goes into the autosave files, which the next start offers: nothing has to be asked, so
    // nobody's logout waits for this program.
    const auto keep = [this](QSessionManager &) { keepForNextStart(); };
    connect(qApp, &QGuiApplication::commitDataRequest, this, keep, Qt::DirectConnection);
    connect(
        qApp, &QGuiApplication::saveStateRequest, this,
        [this](QSessionManager &manager) {
            keepForNextStart();
            QStringList restart {QCoreApplication::applicationFilePath()};
            for (const QVariant &window : Session::capture())
                restart << window.toMap().value(u"path"_s).toString();
            manager.setRestartCommand(restart);
        },
        Qt::DirectConnection);
}

VXAppDelegate::~VXAppDelegate()
{
    setCompareWindowProvider({});
    delete m_compareWindow;
    delete m_changeLogWindow;
    delete m_preferencesController;
    DocumentController::shared().releaseAll();
}

QString VXAppDelegate::applicationName()
{
    return u"Runebook"_s;
}

// Start and end

void VXAppDelegate::openAtStart(const QStringList &paths)
{
    DocumentController &controller = DocumentController::shared();
    const bool restores = paths.isEmpty() && Settings::kRestoresWindows.value();
    if (restores)
        Session::restore();
    m_fileOpener->open(paths);
    if (!m_fileOpener->isOpening() && controller.documentList().isEmpty())
        controller.openUntitledDocumentAndDisplay(true)->setPlaceholder(true);
    StartWarnings::warnOfDamagedDefaults();
}

void VXAppDelegate::reopen(const QVariantList &windows, qint64 process)
{
    Session::open(windows);
    RecoveryPanel::offer()->restoreFrom(process);
    if (DocumentController::shared().documentList().isEmpty())
        DocumentController::shared().openUntitledDocumentAndDisplay(true);
    StartWarnings::warnOfDamagedDefaults();
}

void VXAppDelegate::startScripting()
{
    VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
    handler->setMacroPanelController(m_macroPanelController);
    disconnect(handler, &VXScriptingHandler::unsupportedPythonStarted, this, nullptr);
    connect(handler, &VXScriptingHandler::unsupportedPythonStarted, this, &StartWarnings::showPythonWarning);
}

void VXAppDelegate::applicationDidFinishLaunching()
{
    startScripting();
    RunPump::shared().start(); // there are windows, whether the panel is one of them or not
    if (Settings::kShowsMacroPanel.value())
        m_macroPanelController->showPanelBehind();
    VXScriptingHandler::sharedHandler()->setupScriptMenu();
    setCompareWindowProvider([this] {
        compareWindow();
        return m_compareWindow.data();
    });
    RecoveryPanel::offer();
    auto *application = qobject_cast<VXApplication *>(qApp);
    if (application && application->updater()->automaticallyChecksForUpdates())
        QTimer::singleShot(kUpdateDelayMs, application->updater(), &SUUpdater::checkForUpdatesInBackground);
}

void VXAppDelegate::terminate()
{
    if (std::exchange(m_isTerminating, true))
        return;
    const QVariantList windows = Session::capture();
    DocumentPanels::closeAll([this, windows](bool closed) {
        m_isTerminating = false;
        if (!closed)
            return;
        storeSession(windows);
        if (m_macroPanelController->isWindowLoaded())
            m_macroPanelController->saveMacroTabs();
        QApplication::quit();
    });
}

void VXAppDelegate::openFromElsewhere(const QStringList &paths)
{
    m_fileOpener->open(paths);
    if (QWidget *window = DocumentWindows::front()) {
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
        window->raise();
        window->activateWindow();
    }
}

void VXAppDelegate::leaveSessionAlone()
{
    m_storesSession = false;
    m_isSessionKept = true;
}

void VXAppDelegate::storeSession(const QVariantList &windows)
{
    if (m_storesSession)
        Session::store(windows);
    m_isSessionKept = true;
}

bool VXAppDelegate::keepForNextStart()
{
    storeSession(Session::capture());
    bool isKept = true;
    for (Document *document : DocumentController::shared().documentList()) {
        // What is being typed is kept as it stands: some of it would be refused and lost.
        isKept = document->autosave() && isKept;
    }
    if (m_macroPanelController->isWindowLoaded())
        m_macroPanelController->saveMacroTabs();
    UserDefaults::standard().synchronize();
    return isKept;
}

// Windows

QObject *VXAppDelegate::macroPanelController() const
{
    return m_macroPanelController;
}

QVariantList VXAppDelegate::problemsOfDocument(VXDocument *document) const
{
    QVariantList list;
    if (!document)
        return list;
    Problems problems(*document);
    problems.finish();
    std::vector<Problem> found;
    problems.append({}, 0, document->countOfInfos(), found);
    problems.appendRead({}, found);
    for (const Problem &problem : found) {
        list << QVariantMap {{u"kind"_s, idOfProblemKind(problem.kind)},
                             {u"hint"_s, isHint(problem.kind)},
                             {u"info"_s, problem.info ? QVariant::fromValue(problem.info) : QVariant()},
                             {u"index"_s, static_cast<qint64>(document->indexOfObjectInInfos(problem.info))},
                             {u"name"_s, problem.info ? QVariant(problem.info->name()) : QVariant()},
                             {u"text"_s, problems.explanation(problem)}};
    }
    return list;
}

qint64 VXAppDelegate::fixProblemsOfDocument(const QString &kind, VXDocument *document)
{
    const std::optional<ProblemKind> wanted = problemKindOfId(kind);
    if (!document || !wanted)
        return -1;
    Problems problems(*document);
    problems.finish();
    std::vector<Problem> found;
    problems.append(wanted, 0, document->countOfInfos(), found);
    return ProblemFixes::apply(*document, found);
}

void VXAppDelegate::showMacroPanel()
{
    const bool hides = m_macroPanelController->isReallyVisible() && m_macroPanelController->isKeyWindow();
    Settings::kShowsMacroPanel.set(!hides);
    if (hides)
        m_macroPanelController->hidePanel();
    else
        m_macroPanelController->showPanel();
}

QObject *VXAppDelegate::compareWindow()
{
    if (m_compareWindow)
        return m_compareWindow;
    m_compareWindow = new VXCompareDataWindow;
    // At the lower end, where nothing moves when a script starts or ends.
    auto *column = static_cast<QBoxLayout *>(m_compareWindow->outlet(u"detailPanel"_s)->layout());
    column->addWidget(new RunIndicator(RunIndicator::Stop::WithButton), 0, Qt::AlignRight);
    return m_compareWindow;
}

void VXAppDelegate::showCompareWindow()
{
    compareWindow();
    m_compareWindow->showWindow();
}

void VXAppDelegate::showMergeDialog()
{
    MergeDialog::open(QApplication::activeWindow());
}

void VXAppDelegate::showScriptingDocu()
{
    const QString page = StandardFolders::resource(u"doc/index.html"_s);
    if (QFileInfo(page).isFile())
        QDesktopServices::openUrl(QUrl::fromLocalFile(page));
    else
        DocumentPanels::present({u"HelpError"_s, 1, tr("The documentation is not installed."), page, {}},
                                DocumentWindows::front());
}

QString VXAppDelegate::changeLogURL()
{
    return VXChangeLogWindowController::urlForServer(Settings::kUpdateServer.value().trimmed(),
                                                     QStringLiteral(RUNEBOOK_VERSION),
                                                     QStringLiteral(RUNEBOOK_BUILD));
}

void VXAppDelegate::showChangeLogWindow()
{
    if (!m_changeLogWindow) {
        m_changeLogWindow = new VXChangeLogWindowController;
        m_changeLogWindow->setChangeLogURL(changeLogURL());
    }
    m_changeLogWindow->showWindow();
}

QObject *VXAppDelegate::changeLogWindowController() const
{
    return m_changeLogWindow;
}

QObject *VXAppDelegate::preferencesController()
{
    if (!m_preferencesController)
        m_preferencesController = new VXPreferencesController;
    return m_preferencesController;
}

void VXAppDelegate::showMainPreferences()
{
    preferencesController();
    m_preferencesController->showWindow();
}

void VXAppDelegate::checkForUpdates()
{
    if (auto *application = qobject_cast<VXApplication *>(qApp))
        application->checkForUpdates();
}

void VXAppDelegate::showAbout(QWidget *window)
{
    AboutBox::show(window);
}
