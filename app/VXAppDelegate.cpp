#include "app/VXAppDelegate.h"

#include "app/AboutBox.h"
#include "app/AppSettings.h"
#include "app/FileOpener.h"
#include "app/Session.h"
#include "app/VXApplication.h"
#include "app/VXChangeLogWindowController.h"
#include "app/VXPreferencesController.h"
#include "editing/compare/CompareDocuments.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/merge/MergeDialog.h"
#include "editing/problems/Problems.h"
#include "editing/window/RecoveryPanel.h"
#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/DocumentWindows.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"

#include <QBoxLayout>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

using namespace runebook;
using namespace Qt::StringLiterals;

// What the delegate does for the user; how it is set up stands in VXAppDelegateSetup.cpp.

namespace {

constexpr int kUpdateDelayMs = 3'000;

} // namespace

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
    warnOfDamagedDefaults();
}

void VXAppDelegate::reopen(const QVariantList &windows, qint64 process)
{
    Session::open(windows);
    RecoveryPanel::offer()->restoreFrom(process);
    if (DocumentController::shared().documentList().isEmpty())
        DocumentController::shared().openUntitledDocumentAndDisplay(true);
    warnOfDamagedDefaults();
}

void VXAppDelegate::startScripting()
{
    VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
    handler->setMacroPanelController(m_macroPanelController);
    connect(handler, &VXScriptingHandler::unsupportedPythonStarted, this, &VXAppDelegate::showPythonWarning,
            Qt::UniqueConnection);
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
                             {u"info"_s, problem.info ? QVariant::fromValue(problem.info) : QVariant()},
                             {u"index"_s, static_cast<qint64>(document->indexOfObjectInInfos(problem.info))},
                             {u"name"_s, problem.info ? QVariant(problem.info->name()) : QVariant()},
                             {u"text"_s, problems.explanation(problem)}};
    }
    return list;
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
