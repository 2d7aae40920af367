#include "editing/compare/OverlookCommands.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/Overlooked.h"

#include <QLabel>
#include <QMenu>

namespace runebook {

namespace {

using Row = CommandRow<OverlookCommands, OverlookCommands::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {OverlookCommands::IgnoreCase,
         QT_TR_NOOP("Ignore &Case"),
         {Qt::CTRL | Qt::Key_I},
         [](OverlookCommands &) { OverlookCommands::toggleCase(); }},
        {OverlookCommands::IgnoreSpaces,
         QT_TR_NOOP("Ignore &Spaces"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_I},
         [](OverlookCommands &) { OverlookCommands::toggleSpaces(); }},
    };
    return rows;
}

} // namespace

OverlookCommands::OverlookCommands(QLabel &label) : m_label(label)
{
    for (const Row &row : commandRows()) {
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
        m_actions[row.command]->setCheckable(true);
    }
    label.setTextFormat(Qt::PlainText);
    Settings::kComparesWithoutCase.onChange(this, [this] { show(); });
    Settings::kComparesWithoutSpaces.onChange(this, [this] { show(); });
    Settings::kComparesWithoutFields.onChange(this, [this] { show(); });
    show();
}

void OverlookCommands::toggleCase()
{
    Settings::kComparesWithoutCase.set(!Settings::kComparesWithoutCase.value());
}

void OverlookCommands::toggleSpaces()
{
    Settings::kComparesWithoutSpaces.set(!Settings::kComparesWithoutSpaces.value());
}

void OverlookCommands::addFields(QMenu &menu)
{
    QMenu *fields = menu.addMenu(tr("Ignore &Fields"));
    for (const ComparedField &field : comparedFields()) {
        QAction *action = fields->addAction(titleOf(field));
        action->setCheckable(true);
        const QString key = keyOfField(field.field);
        connect(action, &QAction::triggered, this, [key](bool isChecked) { setOverlooked(key, isChecked); });
        connect(fields, &QMenu::aboutToShow, action,
                [action, field = field.field] { action->setChecked(overlookedOptions().ignores(field)); });
    }
}

void OverlookCommands::show()
{
    m_actions[IgnoreCase]->setChecked(Settings::kComparesWithoutCase.value());
    m_actions[IgnoreSpaces]->setChecked(Settings::kComparesWithoutSpaces.value());
    m_label.setText(overlookedText());
    m_label.setVisible(!m_label.text().isEmpty());
}

} // namespace runebook
