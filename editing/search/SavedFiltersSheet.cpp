#include "editing/search/SavedFiltersSheet.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/search/SavedFilters.h"
#include "platform/PlainLabel.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

SavedFiltersSheet::SavedFiltersSheet(QWidget *parent)
    : QDialog(parent, parent ? Qt::Sheet : Qt::Dialog), m_list(new QListWidget), m_text(plainLabel({}, this))
{
    setWindowTitle(tr("Saved Filters"));
    setWindowModality(Qt::WindowModal);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(m_text);
    m_list->setAccessibleName(tr("Saved filters"));
    m_text->setWordWrap(true);
    m_text->setForegroundRole(QPalette::PlaceholderText);
    m_text->setMinimumWidth(fontMetrics().averageCharWidth() * 50);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    m_rename = buttons->addButton(tr("&Rename (F2)"), QDialogButtonBox::ActionRole);
    m_remove = buttons->addButton(tr("&Delete"), QDialogButtonBox::ActionRole);
    layout->addWidget(buttons);
    for (QPushButton *each : {m_rename, m_remove})
        each->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_rename, &QPushButton::clicked, this, [this] { m_list->editItem(m_list->currentItem()); });
    connect(m_remove, &QPushButton::clicked, this, &SavedFiltersSheet::removeCurrent);
    auto *key = new QShortcut(QKeySequence(Qt::Key_Delete), m_list);
    key->setContext(Qt::WidgetShortcut);
    connect(key, &QShortcut::activated, this, &SavedFiltersSheet::removeCurrent);
    connect(m_list, &QListWidget::currentItemChanged, this, &SavedFiltersSheet::showChoice);
    connect(m_list, &QListWidget::itemChanged, this, &SavedFiltersSheet::rename);
    fill({});
    m_list->setFocus();
}

void SavedFiltersSheet::fill(const QString &current)
{
    {
        const QSignalBlocker blocker(m_list);
        m_list->clear();
        for (const QString &name : SavedFilters::names()) {
            auto *item = new QListWidgetItem(name, m_list);
            item->setFlags(item->flags() | Qt::ItemIsEditable);
            item->setData(Qt::UserRole, name);
            if (name == current)
                m_list->setCurrentItem(item);
        }
        if (!m_list->currentItem())
            m_list->setCurrentRow(0);
    }
    showChoice();
}

void SavedFiltersSheet::showChoice()
{
    const QListWidgetItem *item = m_list->currentItem();
    m_rename->setEnabled(item);
    m_remove->setEnabled(item);
    m_text->setText(item ? cellDisplayText(SavedFilters::textOf(item->data(Qt::UserRole).toString()))
                         : tr("No filter is saved. View > Filters > Save Filter… saves one."));
}

void SavedFiltersSheet::rename(QListWidgetItem *item)
{
    const QString former = item->data(Qt::UserRole).toString();
    const QString name = item->text().trimmed();
    const bool isTaken = name != former && SavedFilters::names().contains(name);
    const bool isRefused = name.isEmpty() || isTaken;
    if (!isRefused && name != former) {
        SavedFilters::rename(former, name);
        const QSignalBlocker blocker(m_list);
        item->setData(Qt::UserRole, name);
    }
    // The list is not to be filled anew while it is closing its editor.
    QMetaObject::invokeMethod(
        this,
        [this, isRefused, isTaken, name, former] {
            fill(isRefused ? former : name);
            if (isTaken)
                m_text->setText(tr("There is a filter “%1” already; “%2” keeps its name.").arg(name, former));
        },
        Qt::QueuedConnection);
}

void SavedFiltersSheet::removeCurrent()
{
    if (const QListWidgetItem *item = m_list->currentItem()) {
        SavedFilters::remove(item->data(Qt::UserRole).toString());
        fill({});
    }
}

} // namespace runebook
