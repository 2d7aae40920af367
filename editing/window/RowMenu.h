#pragma once

#include "editing/window/WindowParts.h"

#include <QObject>
#include <QPointer>

class QAction;
class QMenu;
class VXMenuButton;

namespace runebook {

class StateChange;

/// The commands of the menu bar that act on the selected rows, again where somebody has selected them: in the
/// menu that opens on the rows, and behind a button of the toolbar.
class RowMenu : public QObject
{
    Q_OBJECT
public:
    RowMenu(const WindowParts &parts, StateChange &state);

    /// Appends a command and gives it back.
    QAction *add(QAction *command);
    /// Between groups; those beside each other or at an end are not shown.
    void addSeparator() { m_commands << nullptr; }
    /// Offered first while no row is selected.
    void setCommandWithoutRows(QAction *command) { m_withoutRows = command; }

    /// Shows the commands that can act now at a place of the screen.
    void popUp(const QPoint &place);
    /// A button with the commands of \a menu, but for some.
    static VXMenuButton *makeButton(const QMenu &menu, const QList<QAction *> &without, QWidget *parent);

private:
    WindowParts m_parts;
    StateChange &m_state;
    QList<QPointer<QAction>> m_commands; ///< in their order; null between groups
    QPointer<QAction> m_withoutRows;
};

} // namespace runebook
