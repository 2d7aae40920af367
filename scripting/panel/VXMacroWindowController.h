#pragma once

#include "scripting/panel/MacroTabs.h"
#include "scripting/python/ScriptConsole.h"

#include <QFont>
#include <QObject>
#include <QPointer>
#include <QVariantMap>
#include <memory>

namespace runebook {
class ConsoleFont;
class ConsoleView;
class KeptMacroTabs;
class PanelRuns;
class ScriptFiles;
class SnippetsPopup;
} // namespace runebook

class QMenu;

Q_MOC_INCLUDE("tabbar/VXTabBarControl.h")
Q_MOC_INCLUDE("scripting/panel/SnippetsPopup.h")
Q_MOC_INCLUDE("scripting/panel/VXMacroViewController.h")
Q_MOC_INCLUDE("scripting/panel/VXMacroWindow.h")
Q_MOC_INCLUDE(<QMenu>)

/// The macro panel: tabs of Python code, the console below them, and the commands that run one on the other.
/// One for the program. Its window is loaded when it is first needed, so that making the panel costs nothing;
/// closing the window only hides it. The tabs are kept in the user's defaults. Main thread only.
class VXMacroWindowController : public QObject, public runebook::ScriptConsole, public runebook::MacroTabs
{
    Q_OBJECT
    Q_PROPERTY(int macroFontSize READ macroFontSize WRITE setMacroFontSize)
    Q_PROPERTY(QFont macroFont READ macroFont)
public:
    explicit VXMacroWindowController(QObject *parent = nullptr);
    ~VXMacroWindowController() override;
    /// Registers the fallback of "macroCode"; done by making a controller.
    static void initialize();

public: // the window and what is in it; asking for one of them loads the window
    Q_INVOKABLE VXMacroWindow *window() override;
    bool isWindowLoaded() const { return m_window != nullptr; }
    Q_INVOKABLE VXTabBarControl *tabBarControl() override;
    /// The text view that shows what scripts print.
    Q_INVOKABLE QWidget *consoleText();
    Q_INVOKABLE runebook::SnippetsPopup *snippetsPopup();

public: // showing
    /// Brings the window to the front and gives it the keyboard.
    Q_INVOKABLE void showPanel();
    /// Shows the window behind the others; the keyboard stays where it is.
    Q_INVOKABLE void showPanelBehind();
    /// Hides the window without asking; saves the tabs.
    Q_INVOKABLE void hidePanel();
    /// Whether some of the window can be seen on the screen. Never loads it.
    Q_INVOKABLE bool isReallyVisible() const;
    /// Whether the window is the one that gets the keys.
    Q_INVOKABLE bool isKeyWindow() const;
    /// What closing the window does first: remembers that the panel is closed, and saves the tabs. Always
    /// true.
    Q_INVOKABLE bool windowShouldClose();
    /// Gives a panel without tabs one.
    Q_INVOKABLE void windowDidBecomeKey();

public: // tabs
    /// The selected tab; null when there is none.
    Q_INVOKABLE VXMacroViewController *activeMacroController() override;
    /// Appends a tab with a line to begin with and selects it.
    Q_INVOKABLE void newTab();
    /// Appends a tab; a null \a code leaves it empty.
    Q_INVOKABLE VXMacroViewController *addMacroTitle(const QString &code, const QString &title) override;
    /// Closes the selected tab, or the window when it is the only one.
    Q_INVOKABLE void closeTab();
    /// Brings back the tab that was closed last, as long as the program runs.
    Q_INVOKABLE void reopenTab();
    /// Lets the user type a new title in the selected tab.
    Q_INVOKABLE void renameTab();
    /// Shows the script file at \a path in a tab, with the caret in \a line (from 1; 0 for none). False, with
    /// a word in the panel, when it cannot be read.
    Q_INVOKABLE bool openScript(const QString &path, int line = 0);
    /// Asks for a line and puts the caret into it.
    Q_INVOKABLE void goToLine();
    /// Writes the tabs and which one is selected to the defaults "VXMacroViews" and "VXSelectedMacroView".
    Q_INVOKABLE void saveMacroTabs() override;
    /// Makes the tabs anew from the defaults.
    Q_INVOKABLE void restoreMacroTabs();
    Q_INVOKABLE void tabBarDidSelectTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarWillCloseTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE void tabBarDidCloseTabItem(VXTabBarControl *bar, QObject *item);
    Q_INVOKABLE QString tabBarToolTipForTabItem(VXTabBarControl *bar, QObject *item) const;
    Q_INVOKABLE QMenu *tabViewMenuForTabItem(VXTabBarControl *bar, QObject *item);

public: // running
    /// Saves the tabs and runs the selected one.
    Q_INVOKABLE void runMacro();
    /// The same for its selection, or for the line of the caret.
    Q_INVOKABLE void runSelection();
    /// Does nothing; see stopMacro().
    Q_INVOKABLE void quitMacro() { }
    /// Interrupts the script that runs; the second time with more force.
    Q_INVOKABLE void stopMacro();

public: // the console
    Q_INVOKABLE void setWrite(const QString &text) override;
    void continueWrite(const QString &text) override;
    Q_INVOKABLE void setWriteError(const QString &text) override;
    /// All text of the console.
    Q_INVOKABLE QString write();
    /// Empties the console in the next turn of the event loop.
    Q_INVOKABLE void clearConsole();
    /// Empties the console at once.
    Q_INVOKABLE void clearConsole(QObject *sender) override;
    /// \a text without its first ", in <module>".
    Q_INVOKABLE static QString cleanupErrorMessage(const QString &text);
    /// How the console shows \a text: \a styled gets "string", "emphasised" (ranges) and "links" (each with
    /// "range", "path" and "line").
    Q_INVOKABLE static void addFileLinksAttributesString(const QString &text, QVariantMap *styled);
    /// Follows a link of the console; \a link is its path and its line. False for any other text view.
    Q_INVOKABLE bool textViewClickedOnLinkAtIndex(QObject *textView, const QVariantList &link, int index);

public: // fonts; sizes in points
    int macroFontSize();
    void setMacroFontSize(int size);
    /// The font of the console, made when it is first asked for.
    QFont macroFont();
    /// "NSFont" and "NSColor" of the console's texts; those of errors are the same.
    Q_INVOKABLE QVariantMap messageAttributes();
    Q_INVOKABLE QVariantMap errorAttributes() { return messageAttributes(); }
    Q_INVOKABLE void zoomIn();
    Q_INVOKABLE void zoomOut();
    Q_INVOKABLE void zoomFitInWindow();

public: // snippets
    /// Fills the popup from the program's file of snippets and the user's own.
    Q_INVOKABLE void loadSnippets();
    /// Appends to the popup what is usable among \a snippets: maps with "code" and perhaps "title".
    Q_INVOKABLE void addSnippets(const QVariantList &snippets);
    /// Inserts the code that \a sender, an entry of the popup, stands for.
    Q_INVOKABLE void snippedClicked(QObject *sender);

public:
    /// Opens the documentation: the address in the default "VXDocumentationURL", or the pages that ship with
    /// the program.
    Q_INVOKABLE void showHelp();

Q_SIGNALS:
    /// The console was given \a text, whether the window shows it or not.
    void wrote(const QString &text);
    void wroteError(const QString &text);
    /// A run is over, or was taken back; \a line says what that has changed.
    void summedUp(const QString &line);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void loadWindow();
    void setUpTabBar();
    void connectCommands();
    runebook::ConsoleView &console();
    void setUpConsole();
    void useConsoleFont();
    void followRuns();
    void setUpEmphasis();
    void saveAll();
    void giveFocus();
    void rename(VXMacroViewController *tab);
    void takeTitle(QObject *item, const QString &title);
    void run(void (VXMacroViewController::*command)());

    std::unique_ptr<VXMacroWindow> m_window;
    QPointer<VXMacroViewController> m_lastRun; ///< whose lines "<macro>" means
    QMenu *m_tabMenu = nullptr; // the window's
    runebook::KeptMacroTabs *m_keptTabs; // owned as a child
    runebook::ConsoleFont *m_consoleFont; // owned as a child
    runebook::PanelRuns *m_runs; // owned as a child
    runebook::ScriptFiles *m_scriptFiles = nullptr; // owned as a child
    bool m_isQuitting = false;
};
