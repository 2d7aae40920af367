#include "app/FileOpener.h"
#include "app/Session.h"
#include "app/UnseenOutput.h"
#include "app/VXAppDelegate.h"
#include "app/VXApplication.h"
#include "app/VXChangeLogWindowController.h"
#include "app/VXPreferencesController.h"
#include "document/DocumentSettings.h"
#include "document/VXDocument.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/PendingTexts.h"
#include "editing/window/ChangedOnDisk.h"
#include "editing/window/EditingClasses.h"
#include "editing/window/VXWindowController.h"
#include "model/VXArrayToStringTransformator.h"
#include "model/VXDirectionToIndexValueTransformer.h"
#include "platform/Appearance.h"
#include "platform/CallLater.h"
#include "platform/Curtain.h"
#include "platform/MainMenu.h"
#include "platform/PlainLabel.h"
#include "platform/WindowPlacement.h"
#include "platform/defaults/DefaultsProblem.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/DocumentWindows.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"

#include <QMenu>
#include <QMessageBox>
#include <QSessionManager>
#include <QStatusBar>

using namespace runebook;
using namespace Qt::StringLiterals;

// How the delegate is set up: kinds of documents, menus, scripts, errors, settings.

namespace {

void applyAutosaveDelay()
{
    DocumentController::shared().setAutosavingDelay(VXDocument::usualAutosavingDelay());
}

/// The first file takes the place of the untouched new document; other windows stand beside each other.
void place(QWidget &window, const Document &document)
{
    constexpr qsizetype kLookedAt = 60; // more than have places of their own
    QList<QWidget *> others;
    const Document *front = nullptr;
    for (const Document *other : DocumentController::shared().documentList()) {
        QWidget *otherWindow = other == &document ? nullptr : DocumentWindows::of(*other);
        if (others.size() == kLookedAt)
            break;
        if (!otherWindow || !otherWindow->isVisible() || otherWindow->isMinimized())
            continue;
        front = front ? front : other;
        others << otherWindow;
    }
    if (front && front->isPlaceholder() && !document.fileURL().isEmpty())
        WindowPlacement::takePlaceOf(window, *others.front());
    else
        WindowPlacement::cascade(window, others);
    WindowPlacement::fitIntoScreen(window);
}

QObject *makeWindow(Document &document)
{
    auto *window = new VXWindowController(static_cast<VXDocument &>(document));
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    place(*window, document);
    window->statusBar()->insertPermanentWidget(1, new RunIndicator(RunIndicator::Stop::WithButton));
    if (!DocumentController::shared().isOpeningMany()) {
        window->show();
        return window;
    }
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    window->show();
    window->lower();
    window->setAttribute(Qt::WA_ShowWithoutActivating, false);
    return window;
}

} // namespace

VXAppDelegate::VXAppDelegate(QObject *parent)
    : QObject(parent),
      m_macroPanelController(new VXMacroWindowController(this)),
      m_fileOpener(new FileOpener(this))
{
    initialize();
    Appearance::shared().apply();
    Curtain::hang();
    registerDocuments();
    contributeToMenus();
    presentErrors();
    new UnseenOutput(*m_macroPanelController, this);
    introduceToScripts();
    followScripts();
    followSettings();
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

void VXAppDelegate::registerDocuments()
{
    DocumentController &controller = DocumentController::shared();
    if (controller.types().isEmpty()) {
        controller.addType({u"public.xml"_s, {u"xml"_s}, tr("Glyph data files")});
        controller.addType({u"public.plain-text"_s, {u"txt"_s}, tr("Tab-separated tables")});
    }
    controller.setDocumentFactory([] {
        auto *document = new VXDocument;
        applyAutosaveDelay();
        return document;
    });
    controller.setWindowMaker(makeWindow);
    controller.setPendingTextTaker([](Document &document, const QJsonArray &texts) {
        return takePendingTexts(static_cast<VXDocument &>(document), texts);
    });
}

void VXAppDelegate::introduceToScripts()
{
    ScriptApplication::shared().setDelegate(this);
    // Known by name before a script has met the first one.
    registerEditingClasses();
    bridge::BridgedClass::registerClass(VXPreferencesController::staticMetaObject);
    bridge::BridgedClass::registerClass(VXChangeLogWindowController::staticMetaObject);
}

/// Documents that a script has opened unseen get a window when it ends: nobody could save or close them, and
/// Quit would ask about files that were never shown.
void VXAppDelegate::followScripts()
{
    const RunPump &pump = RunPump::shared();
    connect(&pump, &RunPump::runStarted, this,
            [this] { m_documentsBeforeRun = DocumentController::shared().documents(); });
    connect(&pump, &RunPump::runEnded, this, [this] {
        callLater(this, [this] {
            const QList<QObject *> before = std::exchange(m_documentsBeforeRun, {});
            const QList<Document *> documents = DocumentController::shared().documentList();
            for (auto document = documents.crbegin(); document != documents.crend(); ++document) {
                if (!(*document)->windowController() && !before.contains(*document))
                    (*document)->makeWindowControllers();
            }
        });
    });
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

void VXAppDelegate::presentErrors()
{
    // Reports of a reading come in a row: they are gathered and shown in the front window's message bar.
    connect(&ErrorPresenter::shared(), &ErrorPresenter::presented, this, [this](const Error &error) {
        constexpr qsizetype kShown = 20;
        if (m_pendingErrors.isEmpty())
            QTimer::singleShot(0, this, &VXAppDelegate::showPendingErrors);
        if (m_pendingErrors.size() < kShown)
            m_pendingErrors << error.text();
    });
}

void VXAppDelegate::showPendingErrors()
{
    const QStringList texts = std::exchange(m_pendingErrors, {});
    const auto *document = qobject_cast<VXDocument *>(DocumentController::shared().currentDocument());
    if (auto *window = document ? qobject_cast<VXWindowController *>(document->windowController()) : nullptr)
        window->showMessage(texts.join(u'\n'));
}

void VXAppDelegate::followSettings()
{
    Settings::kAutosaveDelay.onChange(this, applyAutosaveDelay);
    // Closing the last window by hand leaves nothing to come back to.
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        if (!m_isSessionKept)
            Session::store({});
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

void VXAppDelegate::warnOfDamagedDefaults()
{
    const DefaultsProblem problem = takeDefaultsProblem();
    if (!problem.isThere)
        return;
    QWidget *window = DocumentWindows::front();
    const QString text =
        problem.keptAt.isEmpty() ? tr("Your settings cannot be read.") : tr("Your settings were damaged.");
    const QString more = problem.keptAt.isEmpty()
        ? tr("The file “%1” is not readable; changes to the settings last until the program ends.")
              .arg(problem.file)
        : tr("The program starts with fresh ones; the damaged file was kept as “%1”.").arg(problem.keptAt);
    DocumentPanels::present({u"DefaultsError"_s, 1, text, more, {}}, window);
}

void VXAppDelegate::showPythonWarning(const QString &message, const QString &advice)
{
    auto *box = new QMessageBox;
    box->setObjectName(u"pythonWarning"_s);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setAttribute(Qt::WA_QuitOnClose, false);
    box->setWindowModality(Qt::NonModal);
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box, message, advice);
    box->setStandardButtons(QMessageBox::Ok);
    box->show();
}
