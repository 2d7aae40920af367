#pragma once

#include "platform/Error.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

class QAction;
class QMenu;
class QWidget;
class VXMacroViewController;

namespace runebook {

class MacroTabs;

/// Script files in tabs of the macro panel: opened, dropped, saved as scripts of the menu, read again when
/// another program has changed them. A tab that is no file stays what it was: kept by the program.
class ScriptFiles : public QObject
{
    Q_OBJECT
public:
    /// Puts its commands on top of \a menu, behind those for tabs. \a tabs outlives this; its window is
    /// loaded.
    ScriptFiles(MacroTabs &tabs, QMenu &menu, QObject *parent);

    /// Shows the file at \a path in a tab, the one that has it or a new one, with the caret in \a line (from
    /// 1; 0 for none). False, with a word in the panel, when it cannot be read.
    bool open(const QString &path, int line = 0);
    /// Asks which file to open.
    void askToOpen();
    /// Writes the selected tab to its file. False when it has none, and nothing is done.
    bool save();
    /// Asks where; the user's folder of scripts is offered, and a title for the menu is written into the
    /// file.
    void askWhereToSave();
    /// Writes \a tab as the script \a path, which it belongs to from then on.
    bool saveAs(VXMacroViewController &tab, const QString &path);
    /// Looks whether other programs have changed files of tabs: a tab that was not edited is read again, for
    /// others the panel asks.
    void lookForChanges();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void present(const Error &error);
    void reload(VXMacroViewController &tab);
    void askAboutChange(VXMacroViewController &tab);
    QList<VXMacroViewController *> tabs() const;
    QAction *addCommand(QMenu &menu, QAction *before, const QString &text, const QKeySequence &key,
                        void (ScriptFiles::*command)());

    MacroTabs &m_panel;
};

} // namespace runebook
