#include "scripting/panel/VXMacroWindowController.h"

#include "app/tabbar/VXTabBarControl.h"
#include "platform/UserDefaults.h"
#include "scripting/ConsoleText.h"
#include "scripting/VXScriptingHandler.h"
#include "scripting/panel/SnippetsPopup.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "ui_VXMacroWindow_11.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QWindow>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kFontSize = "MacroCodeFontSize"_L1;
constexpr auto kShowsPanel = "showMacroPanel"_L1;
constexpr auto kViews = "VXMacroViews"_L1;
constexpr auto kSelectedView = "VXSelectedMacroView"_L1;
constexpr auto kFirstCode = "macroCode"_L1;
constexpr auto kCode = "code"_L1;
constexpr auto kTitle = "title"_L1;

} // namespace

VXMacroWindowController::VXMacroWindowController(QObject *parent) : QObject(parent)
{
    initialize();
}

VXMacroWindowController::~VXMacroWindowController() = default;

void VXMacroWindowController::initialize()
{
    static const bool once = [] {
        UserDefaults::standard().registerDefaults(
            {{kFirstCode, u"# type your Python code here and press cmd+Return to run."_s}});
        VXMacroViewController::initialize();
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
    VXTabBarControl *bar = tabBarControl();
    bar->setCanCloseOnlyTab(false);
    bar->setSizeCellsToFit(false);
    bar->setUseFullWidth(true);
    bar->setStyleNamed(u"Yosemite"_s);
    bar->setHideForSingleTab(true);
    bar->setCellMaxWidth(220);
    bar->setContentView(m_window->parts().tabContent);
    bar->setDelegate(this);
    connect(m_window.get(), &VXMacroWindow::becameKey, this, &VXMacroWindowController::windowDidBecomeKey);
    connect(m_window.get(), &VXMacroWindow::closing, this, &VXMacroWindowController::windowShouldClose);
    restoreMacroTabs();
    Q_EMIT windowLoaded();
}

VXTabBarControl *VXMacroWindowController::tabBarControl()
{
    return window()->parts().tabBarControl;
}

QWidget *VXMacroWindowController::consoleText()
{
    return window()->parts().consoleText;
}

SnippetsPopup *VXMacroWindowController::snippetsPopup()
{
    return nullptr;
}

void VXMacroWindowController::showPanel()
{
    if (window()->isMinimized())
        window()->showNormal();
    window()->show();
    window()->raise();
    window()->activateWindow();
}

void VXMacroWindowController::showPanelBehind()
{
    window()->setAttribute(Qt::WA_ShowWithoutActivating);
    window()->show();
    window()->lower();
    window()->setAttribute(Qt::WA_ShowWithoutActivating, false);
}

void VXMacroWindowController::hidePanel()
{
    if (!m_window)
        return;
    saveMacroTabs();
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
    UserDefaults::standard().setObjectForKey(false, kShowsPanel);
    saveMacroTabs();
    return true;
}

void VXMacroWindowController::windowDidBecomeKey()
{
    if (tabBarControl()->countOfTabItems() == 0)
        newTab();
}

// Tabs

VXMacroViewController *VXMacroWindowController::activeMacroController()
{
    return qobject_cast<VXMacroViewController *>(tabBarControl()->selectedTabItem());
}

void VXMacroWindowController::newTab()
{
    const QString title = tr("Macro %1").arg(tabBarControl()->countOfTabItems() + 1);
    tabBarControl()->selectTabItem(addMacroTitle(u"# add code here"_s, title));
    saveMacroTabs();
}

VXMacroViewController *VXMacroWindowController::addMacroTitle(const QString &code, const QString &title)
{
    auto *tab = new VXMacroViewController(this);
    tab->setTitle(title);
    if (!code.isNull())
        tab->setCode(code);
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

void VXMacroWindowController::reopenTab() { }
void VXMacroWindowController::renameTab() { }

void VXMacroWindowController::saveMacroTabs()
{
    QVariantList records;
    for (QObject *item : tabBarControl()->tabItems()) {
        if (const auto *tab = qobject_cast<VXMacroViewController *>(item))
            records << QVariantMap {{kCode, tab->code()}, {kTitle, tab->title()}};
    }
    UserDefaults &defaults = UserDefaults::standard();
    defaults.setObjectForKey(records, kViews);
    if (tabBarControl()->selectionIndex() < records.size())
        defaults.setObjectForKey(tabBarControl()->selectionIndex(), kSelectedView);
}

void VXMacroWindowController::restoreMacroTabs()
{
    UserDefaults &defaults = UserDefaults::standard();
    if (!defaults.isSet(kViews))
        addMacroTitle(defaults.stringForKey(kFirstCode), tr("Macro %1").arg(1));
    int number = 0;
    for (const QVariant &each : defaults.arrayForKey(kViews)) {
        const QVariantMap record = each.toMap();
        if (record.isEmpty())
            continue;
        ++number;
        const QString title = record.value(kTitle).toString();
        addMacroTitle(record.value(kCode).toString(), title.isEmpty() ? tr("Macro %1").arg(number) : title);
    }
    const int selected = defaults.integerForKey(kSelectedView);
    tabBarControl()->selectTabItemAtIndex(uint(selected) < tabBarControl()->countOfTabItems() ? uint(selected)
                                                                                              : 0);
}

void VXMacroWindowController::tabBarDidSelectTabItem(VXTabBarControl *, QObject *)
{
    saveMacroTabs();
}

void VXMacroWindowController::tabBarDidCloseTabItem(VXTabBarControl *, QObject *)
{
    saveMacroTabs();
}

// Running

void VXMacroWindowController::runMacro()
{
    saveMacroTabs();
    m_lastRun = activeMacroController();
    if (m_lastRun)
        m_lastRun->runMacro();
}

void VXMacroWindowController::runSelection()
{
    saveMacroTabs();
    m_lastRun = activeMacroController();
    if (m_lastRun)
        m_lastRun->runSelection();
}

void VXMacroWindowController::stopMacro()
{
    VXScriptingHandler::interruptRun();
}

// The console

void VXMacroWindowController::setWrite(const QString &text)
{
    window()->parts().consoleText->appendPlainText(text);
}

void VXMacroWindowController::setWriteError(const QString &text)
{
    window()->parts().consoleText->appendPlainText(cleanupErrorMessage(text));
}

QString VXMacroWindowController::write()
{
    return window()->parts().consoleText->toPlainText();
}

void VXMacroWindowController::clearConsole()
{
    QMetaObject::invokeMethod(
        this, [this] { clearConsole(this); }, Qt::QueuedConnection);
}

void VXMacroWindowController::clearConsole(QObject *)
{
    if (m_window)
        m_window->parts().consoleText->clear();
}

QString VXMacroWindowController::cleanupErrorMessage(const QString &text)
{
    return runebook::cleanupErrorMessage(text);
}

void VXMacroWindowController::addFileLinksAttributesString(const QString &text, QVariantMap *styled)
{
    *styled = {{u"string"_s, ConsoleText::fromOutput(text).text}};
}

bool VXMacroWindowController::textViewClickedOnLinkAtIndex(QObject *textView, const QVariantList &, int)
{
    return textView == consoleText();
}

// Fonts

QFont VXMacroWindowController::macroFont()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(qBound(7, m_macroFontSize, 40));
    return font;
}

QVariantMap VXMacroWindowController::messageAttributes()
{
    return {{u"NSFont"_s, macroFont()}, {u"NSColor"_s, consoleText()->palette().color(QPalette::Text)}};
}

void VXMacroWindowController::zoomIn()
{
    if (VXMacroViewController *tab = activeMacroController())
        tab->zoomIn();
}

void VXMacroWindowController::zoomOut()
{
    if (VXMacroViewController *tab = activeMacroController())
        tab->zoomOut();
}

void VXMacroWindowController::zoomFitInWindow()
{
    UserDefaults::standard().removeObjectForKey(kFontSize);
}

// Snippets and help

void VXMacroWindowController::loadSnippets() { }
void VXMacroWindowController::addSnippets(const QVariantList &) { }
void VXMacroWindowController::snippedClicked(QObject *) { }
void VXMacroWindowController::showHelp() { }
