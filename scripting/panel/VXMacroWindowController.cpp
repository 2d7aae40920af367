#include "scripting/panel/VXMacroWindowController.h"

#include "codeeditor/JSTTextView.h"
#include "platform/StandardFolders.h"
#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/ScriptMenuItems.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleFont.h"
#include "scripting/panel/ConsoleText.h"
#include "scripting/panel/ExternalEditors.h"
#include "scripting/panel/KeptMacroTabs.h"
#include "scripting/panel/LineDialog.h"
#include "scripting/panel/MacroSnippets.h"
#include "scripting/panel/PanelRuns.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/ScriptFiles.h"
#include "scripting/panel/SnippetsPopup.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/python/RunPump.h"
#include "tabbar/VXTabBarControl.h"
#include "ui_VXMacroWindow_11.h"

#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QMouseEvent>
#include <QUrl>
#include <QWindow>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kSnippetsFile = "MacroSnippets.plist"_L1;
constexpr auto kMacroPath = "<string>"_L1;
constexpr auto kPromptPath = "<prompt>"_L1;

QVariantList asList(UnitRange range)
{
    return {qlonglong(range.location), qlonglong(range.length)};
}

/// Selects a tab that was asked for; whoever asks wants to type in it, wherever the focus was. A window that
/// is not shown gives the focus when it is, and makes no editor before.
void showToType(VXMacroViewController *tab, VXTabBarControl &bar)
{
    bar.selectTabItem(tab);
    if (bar.window()->isVisible())
        tab->macroText()->setFocus(Qt::OtherFocusReason);
}

} // namespace

VXMacroWindowController::VXMacroWindowController(QObject *parent)
    : QObject(parent),
      m_keptTabs(new KeptMacroTabs(*this, this)),
      m_consoleFont(new ConsoleFont(this)),
      m_runs(new PanelRuns(this))
{
    initialize();
    connect(m_runs, &PanelRuns::summedUp, this, &VXMacroWindowController::summedUp);
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
    followRuns();
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

/// Whatever runs may be the end of the program.
void VXMacroWindowController::followRuns()
{
    const RunPump &pump = RunPump::shared();
    connect(&pump, &RunPump::runStarted, m_window.get(), [this] { m_keptTabs->saveBeforeRun(); });
    connect(&pump, &RunPump::pumped, m_window.get(), [this] { m_keptTabs->saveWhatIsDue(); });
    m_runs->showIn(*m_window);
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
    PanelRuns::tellOfMissingPython(*m_window);
    m_lastRun = activeMacroController();
    if (m_lastRun)
        (m_lastRun->*command)();
}

void VXMacroWindowController::runMacro()
{
    run(&VXMacroViewController::runMacro);
}

void VXMacroWindowController::runSelection()
{
    run(&VXMacroViewController::runSelection);
}

void VXMacroWindowController::stopMacro()
{
    RunPump::shared().stop();
}

// The console

void VXMacroWindowController::setUpConsole()
{
    m_consoleFont->followSetting();
    useConsoleFont();
    connect(m_consoleFont, &ConsoleFont::changed, this, &VXMacroWindowController::useConsoleFont);
    connect(&console(), &ConsoleView::linkActivated, this, [this](const QString &path, const QString &line) {
        textViewClickedOnLinkAtIndex(&console(), {path, line}, 0);
    });
    connect(&console(), &ConsoleView::zoomRequested, this, &VXMacroViewController::zoomBySteps);
}

void VXMacroWindowController::useConsoleFont()
{
    const QFont &font = m_consoleFont->font();
    console().setConsoleFont(font);
    for (QWidget *widget : {static_cast<QWidget *>(m_window->parts().prompt),
                            static_cast<QWidget *>(m_window->parts().promptLabel)})
        widget->setFont(font);
    setUpEmphasis();
}

void VXMacroWindowController::setUpEmphasis()
{
    if (VXMacroViewController *tab = activeMacroController())
        console().setEmphasisFont(tab->macroFontBold());
}

int VXMacroWindowController::macroFontSize()
{
    window();
    return m_consoleFont->size();
}

void VXMacroWindowController::setMacroFontSize(int size)
{
    m_consoleFont->setSize(size);
}

QFont VXMacroWindowController::macroFont()
{
    window();
    return m_consoleFont->font();
}

QVariantMap VXMacroWindowController::messageAttributes()
{
    return {{u"NSFont"_s, macroFont()}, {u"NSColor"_s, console().palette().color(QPalette::Text)}};
}

QWidget *VXMacroWindowController::consoleText()
{
    return &console();
}

ConsoleView &VXMacroWindowController::console()
{
    return *window()->parts().consoleText;
}

void VXMacroWindowController::setWrite(const QString &text)
{
    if (text.isEmpty())
        return;
    console().append(text, ConsoleView::Kind::Output);
    Q_EMIT wrote(text);
}

void VXMacroWindowController::continueWrite(const QString &text)
{
    console().continueWrite(text);
}

void VXMacroWindowController::setWriteError(const QString &text)
{
    console().append(text, ConsoleView::Kind::Error);
    Q_EMIT wroteError(text);
}

QString VXMacroWindowController::write()
{
    return console().string();
}

void VXMacroWindowController::clearConsole()
{
    QMetaObject::invokeMethod(
        this, [this] { clearConsole(this); }, Qt::QueuedConnection);
}

void VXMacroWindowController::clearConsole(QObject *)
{
    if (m_window)
        console().clearText();
}

QString VXMacroWindowController::cleanupErrorMessage(const QString &text)
{
    return runebook::cleanupErrorMessage(text);
}

void VXMacroWindowController::addFileLinksAttributesString(const QString &text, QVariantMap *styled)
{
    const ConsoleText console = ConsoleText::fromOutput(text);
    QVariantList emphasised;
    for (const UnitRange &range : console.emphasised)
        emphasised << QVariant(asList(range));
    QVariantList links;
    for (const FileLink &link : console.links)
        links << QVariantMap {
            {u"range"_s, asList(link.range)}, {u"path"_s, link.path}, {u"line"_s, link.line}};
    *styled = {{u"string"_s, console.text}, {u"emphasised"_s, emphasised}, {u"links"_s, links}};
}

bool VXMacroWindowController::textViewClickedOnLinkAtIndex(QObject *textView, const QVariantList &link, int)
{
    if (textView != consoleText())
        return false;
    const QString path = link.value(0).toString();
    const QString line = link.value(1).toString();
    if (path == kMacroPath) {
        // The tab that ran last, if it is still there: its lines are meant.
        if (m_lastRun)
            tabBarControl()->selectTabItem(m_lastRun);
        if (VXMacroViewController *tab = activeMacroController()) {
            tab->selectTextForLine(line.toInt());
            tab->macroText()->setFocus(Qt::OtherFocusReason);
        }
    } else if (path == kPromptPath) {
        m_window->parts().prompt->recallLast();
    } else {
        ExternalEditors::open(path, line, this, [this, path, line] { openScript(path, line.toInt()); });
    }
    return true;
}

// Zoom

void VXMacroWindowController::zoomIn()
{
    VXMacroViewController::zoomIn();
}

void VXMacroWindowController::zoomOut()
{
    VXMacroViewController::zoomOut();
}

void VXMacroWindowController::zoomFitInWindow()
{
    VXMacroViewController::zoomFitInWindow();
}

// Snippets

void VXMacroWindowController::loadSnippets()
{
    SnippetsPopup *popup = snippetsPopup();
    popup->removeAllItems();
    addSnippets(snippetsOfFile(StandardFolders::resource(kSnippetsFile)));
    const QString folder = VXScriptingHandler::applicationSupportFolder();
    addSnippets(snippetsOfFile(folder + u'/' + kSnippetsFile));
    popup->show();
}

void VXMacroWindowController::addSnippets(const QVariantList &snippets)
{
    for (const QVariant &each : snippets) {
        const QVariantMap snippet = each.toMap();
        if (const QString title = titleOfSnippet(snippet); !title.isEmpty())
            snippetsPopup()->addSnippet(title, snippet.value(u"code"_s).toString());
    }
}

void VXMacroWindowController::snippedClicked(QObject *sender)
{
    VXMacroViewController *tab = activeMacroController();
    const auto *item = qobject_cast<QAction *>(sender);
    if (!tab || !item)
        return;
    tab->macroText()->insertText(MenuItem::representedObject(*item).toString());
    tab->macroText()->setFocus(Qt::OtherFocusReason);
}

// Help

void VXMacroWindowController::showHelp()
{
    const QUrl address(Settings::kDocumentationAddress.value());
    const QString shipped = StandardFolders::resource(u"doc/index.html"_s);
    QDesktopServices::openUrl(address.scheme() == "https"_L1 ? address : QUrl::fromLocalFile(shipped));
}

// Tabs

VXMacroViewController *VXMacroWindowController::activeMacroController()
{
    return qobject_cast<VXMacroViewController *>(tabBarControl()->selectedTabItem());
}

void VXMacroWindowController::newTab()
{
    const QString title = tr("Macro %1").arg(tabBarControl()->countOfTabItems() + 1);
    showToType(addMacroTitle(u"# add code here"_s, title), *tabBarControl());
    saveMacroTabs();
}

VXMacroViewController *VXMacroWindowController::addMacroTitle(const QString &code, const QString &title)
{
    auto *tab = new VXMacroViewController(this);
    tab->setTitle(title);
    if (!code.isNull())
        tab->setCode(code);
    connect(tab, &VXMacroViewController::restorableStateChanged, m_keptTabs, &KeptMacroTabs::noteEdit);
    tabBarControl()->addTabItem(tab);
    return tab;
}

void VXMacroWindowController::closeTab()
{
    if (tabBarControl()->countOfTabItems() > 1)
        tabBarControl()->closeTabItem(tabBarControl()->selectedTabItem());
    else
        window()->close();
}

void VXMacroWindowController::reopenTab()
{
    if (VXMacroViewController *tab = m_keptTabs->reopenLast()) {
        showToType(tab, *tabBarControl());
        saveMacroTabs();
    }
}

void VXMacroWindowController::renameTab()
{
    rename(activeMacroController());
}

void VXMacroWindowController::rename(VXMacroViewController *tab)
{
    tabBarControl()->hideTabBarAnimate(false, false);
    tabBarControl()->editTitleOfTabItem(tab);
}

void VXMacroWindowController::takeTitle(QObject *item, const QString &title)
{
    if (auto *tab = qobject_cast<VXMacroViewController *>(item)) {
        tab->setTitle(title);
        saveMacroTabs();
    }
    if (QApplication::focusWidget() == tabBarControl() || !QApplication::focusWidget())
        activeMacroController()->macroText()->setFocus(Qt::OtherFocusReason);
}

/// The title and where the code begins.
QString VXMacroWindowController::tabBarToolTipForTabItem(VXTabBarControl *, QObject *item) const
{
    constexpr qsizetype kLongest = 100;
    const auto *tab = qobject_cast<const VXMacroViewController *>(item);
    if (!tab)
        return {};
    const QString line = tab->code().trimmed().section(u'\n', 0, 0).left(kLongest);
    return line.isEmpty() ? tab->title() : tab->title() + u'\n' + line;
}

void VXMacroWindowController::goToLine()
{
    if (VXMacroViewController *tab = activeMacroController())
        askForLine(*tab, window());
}

void VXMacroWindowController::saveMacroTabs()
{
    m_keptTabs->save();
}

void VXMacroWindowController::restoreMacroTabs()
{
    m_keptTabs->restore();
}

void VXMacroWindowController::tabBarDidSelectTabItem(VXTabBarControl *, QObject *)
{
    setUpEmphasis();
    saveMacroTabs();
}

void VXMacroWindowController::tabBarWillCloseTabItem(VXTabBarControl *, QObject *item)
{
    if (const auto *tab = qobject_cast<VXMacroViewController *>(item))
        m_keptTabs->keepClosed(*tab);
}

void VXMacroWindowController::tabBarDidCloseTabItem(VXTabBarControl *, QObject *item)
{
    saveMacroTabs();
    if (qobject_cast<VXMacroViewController *>(item))
        item->deleteLater();
}

QMenu *VXMacroWindowController::tabViewMenuForTabItem(VXTabBarControl *, QObject *item)
{
    tabBarControl()->selectTabItem(item); // its commands mean the selected tab
    if (!m_tabMenu) {
        const Ui::VXMacroWindow_11 &parts = m_window->parts();
        m_tabMenu = new QMenu(m_window.get());
        m_tabMenu->addActions({parts.newTabAction, parts.renameTabAction, parts.closeTabAction});
    }
    return m_tabMenu;
}
