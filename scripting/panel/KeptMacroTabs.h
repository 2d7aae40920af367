#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

class VXMacroViewController;

namespace runebook {

class MacroTabs;

/// Keeps the tabs of the macro panel: in the defaults "VXMacroViews" and "VXSelectedMacroView", a while after
/// each edit, and as long as the program runs those that were closed.
class KeptMacroTabs : public QObject
{
    Q_OBJECT
public:
    /// \a panel must live as long.
    KeptMacroTabs(MacroTabs &panel, QObject *parent);

    /// Writes the tabs and which one is selected.
    void save();
    /// Makes the tabs anew from what was written.
    void restore();

    /// A tab was edited: it is written soon, should the program never come to its proper end.
    void noteEdit();
    /// Whatever runs may be the end of the program.
    void saveBeforeRun();
    /// While something runs, in which timers wait: a script can edit the tabs as well.
    void saveWhatIsDue();

    void keepClosed(const VXMacroViewController &tab);
    /// Appends the tab that was closed last; null when there is none.
    VXMacroViewController *reopenLast();

private:
    VXMacroViewController *addTab(const QVariantMap &record, const QString &title);

    MacroTabs &m_panel;
    QTimer m_saveTimer; ///< after the last edit
    QTimer m_latestSaveTimer; ///< from the first edit on that is not saved
    QElapsedTimer m_sinceEdit; ///< the same, for runs, in which timers wait
    QList<QVariantMap> m_closed; ///< the last one closed last
};

} // namespace runebook
