#include "tabbar/TabTitleEditor.h"

#include "tabbar/TabStrip.h"

#include <QLineEdit>
#include <QShortcut>

namespace runebook {

TabTitleEditor::TabTitleEditor(TabStrip &bar) : QObject(&bar.widget()), m_bar(bar) { }

void TabTitleEditor::edit(QObject *item)
{
    PSMTabBarCell *cell = m_bar.cellForTabItem(item);
    if (!cell)
        return;
    m_bar.selectTabItem(item);
    delete m_field;
    auto *field = new QLineEdit(cell->title(), &m_bar.widget());
    m_field = field;
    m_item = item;
    field->setAccessibleName(tr("Title of the tab"));
    field->setAlignment(Qt::AlignCenter);
    field->selectAll();
    connect(field, &QLineEdit::editingFinished, this, [this, field] { end(field, Ending::Takes); });
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), field, nullptr, nullptr, Qt::WidgetShortcut);
    connect(escape, &QShortcut::activated, this, [this, field] { end(field, Ending::Leaves); });
    followTab();
    field->show();
    field->setFocus(Qt::OtherFocusReason);
}

void TabTitleEditor::end(QLineEdit *field, Ending ending)
{
    if (m_field != field)
        return; // ended already: hiding takes the focus away
    m_field = nullptr;
    const QString title = field->text().trimmed();
    field->hide();
    field->deleteLater();
    if (ending == Ending::Takes && m_item && !title.isEmpty())
        Q_EMIT edited(m_item, title);
}

void TabTitleEditor::followTab()
{
    const PSMTabBarCell *cell = m_field ? m_bar.cellForTabItem(m_item) : nullptr;
    if (cell && !cell->isInOverflowMenu())
        m_field->setGeometry(cell->targetFrame().toRect().adjusted(2, 2, -2, -2));
}

} // namespace runebook
