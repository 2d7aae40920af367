#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

class QSessionManager;
class VXChangeLogWindowController;
class VXCompareDataWindow;
class VXDocument;
Q_MOC_INCLUDE("document/VXDocument.h")
class VXMacroWindowController;
class VXPreferencesController;

namespace runebook {
class FileOpener;
} // namespace runebook

/// What belongs to the program as a whole: its kinds of documents, the windows there is one of, and what
/// happens at the start and at the end. Windows are made on first use and live until the program ends.
class VXAppDelegate : public QObject
{
    Q_OBJECT
public: // making
    explicit VXAppDelegate(QObject *parent = nullptr);
    ~VXAppDelegate() override;
    /// Registers what classes need before anything is opened: the value transformers under their names.
    static void initialize();
    Q_INVOKABLE static QString applicationName();

public: // start and end
    /// Opens the files; without any, the windows of the last session if the user wants them back, or else a
    /// new document.
    void openAtStart(const QStringList &paths);
    /// Opens what \a process, which the user has ended, had open: its \a windows, and what it had autosaved.
    void reopen(const QVariantList &windows, qint64 process);
    /// Starts Python and makes the macro panel the console of scripts.
    void startScripting();
    /// Shows the macro panel behind the other windows if it was open last time, and fills the Scripts menu.
    Q_INVOKABLE void applicationDidFinishLaunching();
    /// Asks about unsaved changes everywhere, then quits.
    Q_INVOKABLE void terminate();
    /// Another start of the program has brought these files.
    void openFromElsewhere(const QStringList &paths);
    /// Keeps the session and all unsaved changes for the next start; called when the desktop ends. Never
    /// asks. False when some changes could not be kept.
    Q_INVOKABLE bool keepForNextStart();
    /// What is open in this process is not what the next start opens.
    void leaveSessionAlone();

public: // windows
    /// Hides the panel when it can be seen and has the keyboard, brings it to the front otherwise.
    Q_INVOKABLE void showMacroPanel();
    Q_INVOKABLE QObject *macroPanelController() const;
    /// What the Problems pane lists of a document: maps of "kind", "info" (null where no record is
    /// concerned), "index" (-1 likewise), "name" and "text".
    Q_INVOKABLE QVariantList problemsOfDocument(VXDocument *document) const;
    /// Makes the fixes of one kind that need no decision, as one step; how many records that were, -1 for no
    /// kind.
    Q_INVOKABLE qint64 fixProblemsOfDocument(const QString &kind, VXDocument *document);
    Q_INVOKABLE void showCompareWindow();
    /// Asks what is to be merged.
    Q_INVOKABLE void showMergeDialog();
    /// The one compare window, made on first use.
    Q_INVOKABLE QObject *compareWindow();
    /// Opens the page "index.html" of the program in the user's browser.
    Q_INVOKABLE void showScriptingDocu();
    Q_INVOKABLE void showChangeLogWindow();
    /// The address of the change log: a page of the server in the default "VXUpdateServer", or the shipped
    /// one.
    Q_INVOKABLE static QString changeLogURL();
    Q_INVOKABLE QObject *changeLogWindowController() const;
    Q_INVOKABLE void showMainPreferences();
    /// Made on first use, its window with it.
    Q_INVOKABLE QObject *preferencesController();
    Q_INVOKABLE void checkForUpdates();
    Q_INVOKABLE void showAbout(QWidget *window = nullptr);

private: // setting up
    void contributeToMenus();
    void introduceToScripts();
    void storeSession(const QVariantList &windows);
    void followSessionManager();

    VXMacroWindowController *m_macroPanelController;
    QPointer<VXCompareDataWindow> m_compareWindow;
    QPointer<VXChangeLogWindowController> m_changeLogWindow;
    QPointer<VXPreferencesController> m_preferencesController;
    runebook::FileOpener *m_fileOpener;
    bool m_isTerminating = false;
    bool m_isSessionKept = false;
    bool m_storesSession = true;
};
