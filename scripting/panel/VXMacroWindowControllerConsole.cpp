// What the panel shows beside its tabs: the console with its font and its links, the snippets, the help.
#include "scripting/panel/VXMacroWindowController.h"

#include "codeeditor/JSTTextView.h"
#include "platform/StandardFolders.h"
#include "scripting/classes/ScriptMenuItems.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleText.h"
#include "scripting/panel/ExternalEditors.h"
#include "scripting/panel/MacroSnippets.h"
#include "scripting/panel/PanelSettings.h"
#include "scripting/panel/SnippetsPopup.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "tabbar/VXTabBarControl.h"
#include "ui_VXMacroWindow_11.h"

#include <QDesktopServices>
#include <QFontDatabase>
#include <QUrl>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kSnippetsFile = "MacroSnippets.plist"_L1;
constexpr auto kMacroPath = "<string>"_L1;
constexpr auto kPromptPath = "<prompt>"_L1;

constexpr int kSmallestConsoleFont = 7;
constexpr int kLargestConsoleFont = 40;
constexpr int kConsoleInsetWidth = 15;
constexpr int kConsoleInsetHeight = 7;

QVariantList asList(UnitRange range)
{
    return {qlonglong(range.location), qlonglong(range.length)};
}

} // namespace

// The console

void VXMacroWindowController::setUpConsole()
{
    m_macroFontSize = Settings::kMacroFontSize.value();
    setUpConsoleFont();
    Settings::kMacroFontSize.onChange(this, [this] { fontSizeChanged(); });
    connect(&console(), &ConsoleView::linkActivated, this, [this](const QString &path, const QString &line) {
        textViewClickedOnLinkAtIndex(&console(), {path, line}, 0);
    });
    connect(&console(), &ConsoleView::zoomRequested, this, &VXMacroViewController::zoomBySteps);
}

void VXMacroWindowController::fontSizeChanged()
{
    const int size = Settings::kMacroFontSize.value();
    const bool isUsable = size >= kSmallestConsoleFont && size <= kLargestConsoleFont;
    m_macroFontSize = isUsable ? size : Settings::kMacroFontSize.fallback();
    m_macroFont.reset();
    setUpConsoleFont();
}

void VXMacroWindowController::setUpConsoleFont()
{
    if (!m_macroFont) {
        m_macroFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        m_macroFont->setPointSize(qBound(kSmallestConsoleFont, m_macroFontSize, kLargestConsoleFont));
    }
    console().setConsoleFont(*m_macroFont);
    for (QWidget *widget : {static_cast<QWidget *>(m_window->parts().prompt),
                            static_cast<QWidget *>(m_window->parts().promptLabel)})
        widget->setFont(*m_macroFont);
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
    return m_macroFontSize;
}

QFont VXMacroWindowController::macroFont()
{
    window();
    return *m_macroFont;
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
