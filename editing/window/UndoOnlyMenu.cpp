#include "editing/window/UndoOnlyMenu.h"

#include "document/VXDocument.h"
#include "editing/records/GlyphTableView.h"
#include "platform/MainMenu.h"
#include "platform/MenuText.h"

#include <QMenu>

namespace runebook {

UndoOnlyMenu::UndoOnlyMenu(const WindowParts &parts, QObject *parent)
    : QObject(parent), m_parts(parts), m_menu(new QMenu(tr("Undo Only &This"), &parts.window))
{
    connect(m_menu, &QMenu::aboutToShow, this, [this] { fill(*m_menu); });
}

bool UndoOnlyMenu::hasSteps() const
{
    return m_parts.document.undoManager()->canUndo();
}

void UndoOnlyMenu::addTo(QMenu &history)
{
    history.addSeparator();
    history.addMenu(m_menu)->setEnabled(hasSteps());
}

void UndoOnlyMenu::popUp()
{
    m_menu->popup(m_parts.table.viewport()->mapToGlobal(QPoint(40, 20)));
    if (!m_menu->isEmpty())
        m_menu->setActiveAction(m_menu->actions().constFirst());
}

void UndoOnlyMenu::fill(QMenu &menu)
{
    constexpr int kShownSteps = 40;
    menu.clear();
    MainMenu::commitEditing(m_parts.window); // a step of its own in the list
    const QUndoStack *stack = m_parts.document.undoManager()->stack();
    for (int step = stack->index() - 1; step >= qMax(0, stack->index() - kShownSteps); --step) {
        const QString name = stack->text(step);
        MainMenu::addCommand(menu, m_parts.window, menuText(name.isEmpty() ? tr("Change") : name),
                             [this, step] { takeBack(step); });
    }
}

void UndoOnlyMenu::takeBack(int step)
{
    Error error;
    if (!m_parts.document.undoOnlyStep(step, &error))
        m_parts.showMessage(error.text());
}

} // namespace runebook
