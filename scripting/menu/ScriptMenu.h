#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>
#include <memory>

class QAction;
class QMenu;

namespace runebook {

class ScriptConsole;
class ScriptFolderWatcher;

/// The Scripts menu, one for the program: the scripts that folders hold stand above its first separator,
/// fixed items below. VXScriptingHandler says what each operation is for.
class ScriptMenu : public QObject
{
    Q_OBJECT
public:
    explicit ScriptMenu(QObject *parent);
    ~ScriptMenu() override;

    /// Made with its fixed items on first call.
    QMenu *menu();
    QAction *runAgainItem();
    /// Lets the fixed items do what they say.
    void wire();

public: // filling
    /// Fills the menu anew from \a folders; none says that there is no Python. What files of the user are no
    /// scripts, and why, is written to \a console from the second time on.
    void reload(const QStringList &folders, ScriptConsole &console);
    void addFolder(const QString &folder, const QString &subFolder);
    void addScript(const QString &fileName, const QString &basePath, const QString &subFolder);
    /// From the keys of items ("folder/title") to the paths of scripts, for the whole process.
    static QVariantMap paths();
    /// True when scripts on disk differ from those in the menu.
    bool isOutdated() const;

public: // choosing
    /// Remembers \a item as the last one, and asks for its script to be run.
    void choose(QAction *item);
    /// Brings the run-again item up to date; true when there is a script to run again.
    bool setUpRunAgain();
    /// Whether \a item can be chosen.
    bool validate(QAction *item);

Q_SIGNALS:
    void scriptChosen(const QString &path);
    void folderRequested();
    void reloadRequested();

private:
    void make();
    void validateAll();
    void tellOmissions(ScriptConsole &console) const;
    void showReloadState();

    QPointer<QMenu> m_menu; // the application's: widgets end with it, the handler does not
    std::unique_ptr<ScriptFolderWatcher> m_watcher;
};

} // namespace runebook
