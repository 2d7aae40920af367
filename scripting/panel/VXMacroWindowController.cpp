#include "scripting/panel/VXMacroWindowController.h"

#include "codeeditor/JSTTextView.h"
#include "platform/MessageBar.h"
#include "platform/documents/DocumentController.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/RunQuestion.h"
#include "scripting/panel/RunSummary.h"
#include "scripting/panel/ScriptFiles.h"
#include "scripting/panel/SnippetsPopup.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/python/RunPump.h"
#include "tabbar/VXTabBarControl.h"
#include "ui_VXMacroWindow_11.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStatusBar>
#include <QToolButton>
#include <QWindow>

using namespace runebook;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long after the last edit the tabs are written, should the program never come to its proper end.
constexpr auto kSaveDelay = 3s;
/// The same after the first edit, when one comes after the other: the text is to be on the disk by the bound
/// that documents have.
std::chrono::milliseconds latestSave()
{
    constexpr double kShare = 0.7;
    return std::chrono::milliseconds(qint64(DocumentController::shared().autosavingBound() * 1000 * kShare));
}

/// The preferences are the program's, which is known here by the names of its operations alone.
void showPythonPreferences()
{
    QObject *program = ScriptApplication::shared().delegate();
    QObject *preferences = nullptr;
    if (program)
        QMetaObject::invokeMethod(program, "preferencesController", Q_RETURN_ARG(QObject *, preferences));
    if (!preferences)
        return;
    QMetaObject::invokeMethod(preferences, "showPrefpaneWithIdentifier", Q_ARG(QString, u"python"_s));
    QMetaObject::invokeMethod(preferences, "showWindow");
}

} // namespace

VXMacroWindowController::VXMacroWindowController(QObject *parent) : QObject(parent)
{
    initialize();
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelay);
    m_latestSaveTimer.setSingleShot(true);
    for (QTimer *timer : {&m_saveTimer, &m_latestSaveTimer})
        connect(timer, &QTimer::timeout, this, &VXMacroWindowController::saveMacroTabs);
    followRuns();
}

VXMacroWindowController::~VXMacroWindowController() = default;

void VXMacroWindowController::initialize()
{
    static const bool once = [] {
        Settings::kFirstMacro.registerFallback();
        VXMacroViewController::initialize();
        // Known by name before a script has met the first one.
        bridge::BridgedClass::registerClass(VXMacroViewController::staticMetaObject);
        return true;
    }();
    Q_UNUSED(once)
}

// The window

VXMacroWindow *VXMacroWindowController::window()
{
    if (!m_window)
        loadWindow();
    return m_window.get();
}

void VXMacroWindowController::loadWindow()
{
    m_window = std::make_unique<VXMacroWindow>();
    setUpTabBar();
    loadSnippets();
    setUpConsole();
    restoreMacroTabs();
    m_scriptFiles = new ScriptFiles(*this, *m_window->parts().fileMenu, this);
    setUpRuns();
    connectCommands();
    connect(m_window.get(), &VXMacroWindow::becameKey, this, &VXMacroWindowController::windowDidBecomeKey);
    connect(m_window.get(), &VXMacroWindow::closing, this, &VXMacroWindowController::windowShouldClose);
    connect(qApp, &QCoreApplication::aboutToQuit, this, &VXMacroWindowController::saveAll);
    qApp->installEventFilter(this);
}

void VXMacroWindowController::setUpTabBar()
{
    VXTabBarControl *bar = tabBarControl();
    bar->setCanCloseOnlyTab(false);
    bar->setSizeCellsToFit(false);
    bar->setUseFullWidth(true);
    bar->setAlwaysShowActiveTab(true);
    bar->setStyleNamed(u"Yosemite"_s);
    bar->setHideForSingleTab(true);
    bar->setDelegate(this);
    bar->setCellMaxWidth(220);
    bar->setShowAddTabButton(true);
    bar->setContentView(m_window->parts().tabContent);
    bar->installEventFilter(this);
    connect(snippetsPopup(), &SnippetsPopup::chosen, this, &VXMacroWindowController::snippedClicked);
    connect(bar, &VXTabBarControl::addTabRequested, this, &VXMacroWindowController::newTab);
    connect(bar, &VXTabBarControl::tabItemMoved, this, &VXMacroWindowController::saveMacroTabs);
    connect(bar, &VXTabBarControl::titleEdited, this, &VXMacroWindowController::takeTitle);
}

void VXMacroWindowController::connectCommands()
{
    const Ui::VXMacroWindow_11 &parts = m_window->parts();
    using Panel = VXMacroWindowController;
    const std::pair<QAction *, void (Panel::*)()> panelCommands[] = {
        {parts.newTabAction, &Panel::newTab},       {parts.reopenTabAction, &Panel::reopenTab},
        {parts.renameTabAction, &Panel::renameTab}, {parts.closeTabAction, &Panel::closeTab},
        {parts.goToLineAction, &Panel::goToLine},   {parts.zoomInAction, &Panel::zoomIn},
        {parts.zoomOutAction, &Panel::zoomOut},     {parts.zoomFitAction, &Panel::zoomFitInWindow},
        {parts.runAction, &Panel::runMacro},        {parts.runSelectionAction, &Panel::runSelection},
        {parts.stopAction, &Panel::stopMacro},      {parts.clearConsoleAction, &Panel::clearConsole},
        {parts.helpAction, &Panel::showHelp},
    };
    for (const auto &[action, command] : panelCommands)
        connect(action, &QAction::triggered, this, command);
    const std::pair<QAction *, void (JSTTextView::*)()> editorCommands[] = {
        {parts.commentAction, &JSTTextView::commentSelection},
        {parts.shiftRightAction, &JSTTextView::shiftSelectedLinesRight},
        {parts.shiftLeftAction, &JSTTextView::shiftSelectedLinesLeft},
        {parts.duplicateAction, &JSTTextView::duplicateSelectedLines},
        {parts.moveUpAction, &JSTTextView::moveSelectedLinesUp},
        {parts.moveDownAction, &JSTTextView::moveSelectedLinesDown},
        {parts.joinAction, &JSTTextView::joinSelectedLines},
    };
    for (const auto &[action, command] : editorCommands) {
        connect(action, &QAction::triggered, this, [this, edit = command] {
            if (VXMacroViewController *tab = activeMacroController())
                (tab->macroText()->*edit)();
        });
    }
}

void VXMacroWindowController::setUpRuns()
{
    RunPump &pump = RunPump::shared();
    for (QObject *control : m_window->parts().stopAction->associatedObjects()) {
        if (auto *button = qobject_cast<QToolButton *>(control))
            pump.addStopControl(button);
    }
    connect(&pump, &RunPump::runStarted, m_window.get(), [this] {
        saveBeforeRun();
        m_window->setRunning(true);
    });
    connect(&pump, &RunPump::pumped, m_window.get(), [this] { saveWhatIsDue(); });
    connect(m_window->parts().prompt, &PromptLine::aboutToRun, this,
            &VXMacroWindowController::tellOfMissingPython);
    connect(&pump, &RunPump::pumped, m_window->parts().consoleText, &ConsoleView::showPending);
    m_runQuestion->setPanel(m_window.get());
    connect(this, &VXMacroWindowController::summedUp, m_window->statusBar(),
            [bar = m_window->statusBar()](const QString &line) { bar->showMessage(line); });
    connect(&pump, &RunPump::runEnded, m_window.get(), [this] { m_window->setRunning(false); });
}

/// Scripts of the Scripts menu run without the panel's window as well.
void VXMacroWindowController::followRuns()
{
    auto *summary = new RunSummary(this);
    m_runQuestion = new RunQuestion(*summary, this);
    const RunPump &pump = RunPump::shared();
    connect(&pump, &RunPump::runStarted, summary, &RunSummary::begin);
    connect(&pump, &RunPump::runStarted, m_runQuestion, &RunQuestion::begin);
    connect(&pump, &RunPump::runEnded, summary, [this, summary] {
        Q_EMIT summedUp(summary->end());
        m_runQuestion->end();
    });
    connect(m_runQuestion, &RunQuestion::tookBack, this, &VXMacroWindowController::summedUp);
}

VXTabBarControl *VXMacroWindowController::tabBarControl()
{
    return window()->parts().tabBarControl;
}

SnippetsPopup *VXMacroWindowController::snippetsPopup()
{
    return window()->snippetsPopup();
}

// Showing

void VXMacroWindowController::showPanel()
{
    RunPump::shared().start(); // there is something to see from now on
    if (window()->isMinimized())
        window()->showNormal();
    window()->show();
    window()->raise();
    window()->activateWindow();
    giveFocus();
}

void VXMacroWindowController::showPanelBehind()
{
    RunPump::shared().start();
    window()->setAttribute(Qt::WA_ShowWithoutActivating);
    window()->show();
    window()->lower();
    giveFocus();
    window()->setAttribute(Qt::WA_ShowWithoutActivating, false);
}

/// Somebody who opens the panel wants to type.
void VXMacroWindowController::giveFocus()
{
    VXMacroViewController *tab = activeMacroController();
    if (tab && !qobject_cast<QPlainTextEdit *>(m_window->focusWidget()))
        tab->macroText()->setFocus();
}

void VXMacroWindowController::hidePanel()
{
    if (!m_window)
        return;
    saveAll();
    m_window->hide();
}

bool VXMacroWindowController::isReallyVisible() const
{
    return m_window && m_window->isVisible() && !m_window->isMinimized() && m_window->windowHandle()
        && m_window->windowHandle()->isExposed();
}

bool VXMacroWindowController::isKeyWindow() const
{
    return m_window && m_window->isActiveWindow();
}

bool VXMacroWindowController::windowShouldClose()
{
    // At the end of the program windows close as well; that is not the user's choice for the next time.
    if (!m_isQuitting)
        Settings::kShowsMacroPanel.set(false);
    saveAll();
    return true;
}

void VXMacroWindowController::windowDidBecomeKey()
{
    if (tabBarControl()->countOfTabItems() == 0)
        newTab();
}

void VXMacroWindowController::saveAll()
{
    if (!m_window)
        return;
    saveMacroTabs();
    m_window->saveLayout();
}

bool VXMacroWindowController::openScript(const QString &path, int line)
{
    showPanel();
    return m_scriptFiles->open(path, line);
}

bool VXMacroWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Quit && watched == qApp) {
        m_isQuitting = true;
        // Somebody may still say no.
        QMetaObject::invokeMethod(
            this, [this] { m_isQuitting = false; }, Qt::QueuedConnection);
    } else if (event->type() == QEvent::MouseButtonDblClick && m_window && watched == tabBarControl()) {
        const auto *click = static_cast<QMouseEvent *>(event);
        const PSMTabBarCell *cell = tabBarControl()->cellAtPoint(click->position());
        if (click->button() == Qt::LeftButton && cell)
            rename(qobject_cast<VXMacroViewController *>(cell->representedObject()));
        else if (click->button() == Qt::LeftButton)
            newTab();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

// Running

void VXMacroWindowController::run(void (VXMacroViewController::*command)())
{
    saveMacroTabs();
    tellOfMissingPython();
    m_lastRun = activeMacroController();
    if (m_lastRun)
        (m_lastRun->*command)();
}

/// A run without an interpreter does nothing; somebody has to say so.
void VXMacroWindowController::tellOfMissingPython()
{
    const QString text = VXScriptingHandler::sharedHandler()->missingPythonText();
    if (!text.isEmpty())
        m_window->messageBar()->ask(text, {{tr("Python &Preferences…"), [] { showPythonPreferences(); }}});
}

void VXMacroWindowController::runMacro()
{
    run(&VXMacroViewController::runMacro);
}

void VXMacroWindowController::runSelection()
{
    run(&VXMacroViewController::runSelection);
}

void VXMacroWindowController::noteEdit()
{
    m_saveTimer.start();
    if (m_latestSaveTimer.isActive())
        return; // started anew at every edit it would never end
    m_latestSaveTimer.start(latestSave());
    m_sinceEdit.start();
}

/// Whatever runs may be the end of the program.
void VXMacroWindowController::saveBeforeRun()
{
    if (m_latestSaveTimer.isActive())
        saveMacroTabs();
    UserDefaults::standard().synchronize();
}

/// A script can edit the tabs as well.
void VXMacroWindowController::saveWhatIsDue()
{
    if (m_latestSaveTimer.isActive() && m_sinceEdit.hasExpired(latestSave().count()))
        saveBeforeRun();
}

void VXMacroWindowController::stopMacro()
{
    RunPump::shared().stop();
}
