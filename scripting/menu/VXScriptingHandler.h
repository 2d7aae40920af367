#pragma once

#include "platform/Error.h"
#include "scripting/python/PythonPlaces.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

class QAction;
class QMenu;

namespace runebook {
class ScriptMenu;
} // namespace runebook

Q_MOC_INCLUDE(<QAction>)
Q_MOC_INCLUDE(<QMenu>)

/// Finds Python among the user's installations, loads it, starts it and gives it the scripts' folders. One
/// for the program. Main thread only. An installation is described by a map with "name", "fullPath" and
/// "version".
class VXScriptingHandler : public QObject
{
    Q_OBJECT
public: // making
    /// The handler of the program, made and started on first call.
    Q_INVOKABLE static VXScriptingHandler *sharedHandler();
    /// A handler that has done nothing yet, looking in \a places.
    explicit VXScriptingHandler(runebook::PythonPlaces places, QObject *parent = nullptr);
    ~VXScriptingHandler() override;
    /// Finds Python, loads its functions and starts it. When that fails, startError() tells why.
    Q_INVOKABLE VXScriptingHandler *initOnce();

public: // folders
    /// The program's folder in the user's application support, or in the temporary directory.
    Q_INVOKABLE static QString applicationSupportFolder();
    /// The user's application support with applicationSupportFolder once more below it.
    Q_INVOKABLE static QString applicationSupportPath();
    /// The folders that hold scripts, the program's own among them; the scripts' modules are found there.
    /// Empty until an interpreter of version 3 or newer is up; the same from then on.
    Q_INVOKABLE static QStringList scriptPaths();
    /// When the folder for scripts that users are shown exists and the one that is searched does not, makes
    /// the latter a link to the former.
    Q_INVOKABLE static void linkScriptFolder();
    Q_INVOKABLE static bool validateScript(const QString &path);

public: // installations of Python
    Q_INVOKABLE QList<QVariantMap> pythonFrameworks() const { return m_pythonFrameworks; }
    Q_INVOKABLE void setPythonFrameworks(const QList<QVariantMap> &frameworks);
    Q_INVOKABLE void findAllPythonFrameworks();
    Q_INVOKABLE QStringList allFrameworkPaths(const QString &path) const;
    Q_INVOKABLE QStringList allVersionsOfFramework(const QString &path) const;
    /// On yes \a version gets the version of the framework at \a path.
    Q_INVOKABLE bool isSupportedPythonVersion(const QString &path, QString *version) const;
    Q_INVOKABLE bool isSupportedPythonVersion(const QString &version) const;
    /// What the user chose, as it stands, or the newest found; null when there is none.
    Q_INVOKABLE QString currentPythonPath() const;

public: // the interpreter
    /// An open library, never to be closed; null when there is none at \a path.
    void *pythonLibForPath(const QString &path) const;
    Q_INVOKABLE void loadPythonFunctions();
    Q_INVOKABLE void initPython();
    /// True from the moment scripts can run.
    Q_INVOKABLE static bool isPythonRunning();
    /// -1 until an interpreter is up.
    static int PythonMajorVersion;
    static int PythonMinorVersion;
    /// Why no interpreter is up; an empty domain when one is, or when none was found at all.
    const runebook::Error &startError() const { return m_startError; }
    /// For a person whose scripts cannot run: why, what was searched, and what to do; empty when Python is
    /// up.
    QString missingPythonText() const;

public: // running
    /// Runs a script file; what it prints goes to the console.
    Q_INVOKABLE void runMacroFile(const QString &path);
    /// Runs code as the macro panel does.
    Q_INVOKABLE void runMacroString(const QString &code);
    /// Stops the script that runs with KeyboardInterrupt; on any thread.
    static void interruptRun();

public: // the macro panel
    /// Registers the macro panel, which shows what scripts write unless the process's own output does. It
    /// has to be a runebook::ScriptConsole as well; not owned, and may go. Null takes it away.
    Q_INVOKABLE void setMacroPanelController(QObject *panel);
    /// The registered panel, or null.
    Q_INVOKABLE static QObject *globalMacroPanelController();
    /// Always empty, deliberately: everything reads the panel of the process.
    Q_INVOKABLE QObject *macroPanelController() const { return m_macroPanelController; }

public: // the Scripts menu; its items carry "tag", "representedObject" (see ScriptMenuItems.h)
    /// One for the program, in the menu bars of all windows; made with its fixed items on first call.
    Q_INVOKABLE QMenu *scriptMenu();
    /// Runs the script that was chosen last once more.
    Q_INVOKABLE QAction *runAgainMenuItem();
    /// Wires the fixed items and fills the menu; once, when the panel is registered.
    Q_INVOKABLE void setupScriptMenu();
    /// Fills the menu anew from scriptPaths() and clears the console; which files of the user's are no
    /// scripts, and why, is printed there from the second time on. Does nothing before a panel is registered.
    /// Also done when the notification "VXReloadScriptMenu" is posted.
    Q_INVOKABLE void reloadScriptMenu();
    /// Puts the scripts of \a folder and of the folders below it on top of the menu, under submenus named
    /// by the parts of \a subFolder. Folders that cannot be read are skipped.
    Q_INVOKABLE void addScriptsFromFolderSubFolder(const QString &folder, const QString &subFolder);
    /// Adds the script \a fileName in \a basePath if it declares a title.
    Q_INVOKABLE void addScriptMenuItemWithBasePathSubFolder(const QString &fileName, const QString &basePath,
                                                            const QString &subFolder);
    /// From the keys of menu items ("folder/title") to the paths of scripts.
    Q_INVOKABLE static QVariantMap scriptPathDict();
    /// Shows the user's script folder in the desktop's file browser; makes it when it is missing.
    Q_INVOKABLE void showScriptFolder();
    /// Runs the script of \a item and remembers it as the last one; nothing when its file is gone.
    Q_INVOKABLE void runScriptMenu(QAction *item);
    /// True when there is a script to run again.
    Q_INVOKABLE bool setupRunAgainMenuItem();
    /// Whether \a item can be chosen; brings the run-again item up to date.
    Q_INVOKABLE bool validateMenuItem(QAction *item);
    /// True when scripts on disk differ from those in the menu, which is never rebuilt by itself since that
    /// would clear the console.
    Q_INVOKABLE bool isScriptMenuOutdated() const;

Q_SIGNALS:
    /// The notification "VXReloadScriptMenu" was posted.
    void scriptMenuReloadRequested();
    /// The interpreter that came up is outside the supported range; once, a second after the start.
    void unsupportedPythonStarted(const QString &message, const QString &advice);

private:
    bool isUsable(const QString &path);
    void startInterpreter(const QString &path);
    void warnWhenUnsupported();

    runebook::PythonPlaces m_places;
    QList<QVariantMap> m_pythonFrameworks;
    runebook::Error m_startError;
    QObject *m_macroPanelController = nullptr;
    runebook::ScriptMenu *m_menu; // owned as a child
};
