#include "editing/window/RowMenu.h"

#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/StateChange.h"
#include "editing/window/VXMenuButton.h"

#include <QAction>
#include <QMenu>

namespace runebook {

using namespace Qt::StringLiterals;

RowMenu::RowMenu(const WindowParts &parts, StateChange &state) : m_parts(parts), m_state(state)
{
    connect(&parts.table, &GlyphTableView::rowMenuRequested, this, &RowMenu::popUp);
}

QAction *RowMenu::add(QAction *command)
{
    m_commands << command;
    return command;
}

void RowMenu::popUp(const QPoint &place)
{
    m_parts.table.setFocus(Qt::OtherFocusReason);
    m_state.tell();
    auto *menu = new QMenu(&m_parts.window);
    menu->setObjectName(u"rowMenu"_s);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction *command : m_commands) {
        if (!command)
            menu->addSeparator();
        else if (command->isEnabled())
            menu->addAction(command);
    }
    if (m_withoutRows && m_parts.list.selectedCount() == 0)
        menu->insertAction(menu->actions().value(0), m_withoutRows);
    menu->popup(place);
}

VXMenuButton *RowMenu::makeButton(const QMenu &menu, const QList<QAction *> &without, QWidget *parent)
{
    auto *button = new VXMenuButton(parent);
    button->setIcon(QIcon(u":/icons/more.svg"_s));
    button->setToolTip(tr("Commands on the selected glyphs"));
    button->setAccessibleName(button->toolTip());
    for (QAction *action : menu.actions()) {
        if (action->isSeparator() || without.contains(action))
            continue;
        QAction *item = button->addItemWithTitle(action->text());
        item->setEnabled(action->isEnabled());
        connect(action, &QAction::changed, item, [action, item] { item->setEnabled(action->isEnabled()); });
        connect(button, &VXMenuButton::itemChosen, action, [action, item](const QAction *chosen) {
            if (chosen == item)
                action->trigger();
        });
    }
    return button;
}

} // namespace runebook
