#include "editing/search/SearchHelpSheet.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

enum Column { Place, Text, Finds, ColumnCount };

QLabel *plainLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

} // namespace

SearchHelpSheet::SearchHelpSheet(QWidget *parent)
    : QDialog(parent), m_examples(SearchExamples::all()), m_list(new QTreeWidget)
{
    setWindowTitle(tr("How to Search"));
    setWindowModality(Qt::WindowModal);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(plainLabel(tr("Choose an example to put it into the search field.")));
    addExamples();
    layout->addWidget(m_list);
    layout->addWidget(plainLabel(
        tr("The menu at the magnifier, or Alt+Down, chooses the field and the options. A character that no "
           "name begins with, such as ä, stands for its code point.")));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *insert = buttons->addButton(tr("&Insert"), QDialogButtonBox::AcceptRole);
    layout->addWidget(buttons);
    // Only now: without a dialog around it the button forgets it.
    insert->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { choose(m_list->currentItem()); });
    connect(m_list, &QTreeWidget::itemClicked, this, &SearchHelpSheet::choose);
    m_list->setFocus();
}

void SearchHelpSheet::addExamples()
{
    m_list->setColumnCount(ColumnCount);
    m_list->setHeaderLabels({tr("Search"), tr("For"), tr("Finds")});
    m_list->setAccessibleName(tr("Examples"));
    m_list->setRootIsDecorated(false);
    m_list->setAlternatingRowColors(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setUniformRowHeights(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const QFont typed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    for (const SearchExample &example : std::as_const(m_examples)) {
        auto *item = new QTreeWidgetItem(m_list, {example.place(), example.text, example.finds});
        item->setFont(Text, typed);
    }
    m_list->setCurrentItem(m_list->topLevelItem(0));
    for (const Column column : {Place, Text, Finds})
        m_list->resizeColumnToContents(column);
    m_list->header()->setSectionsMovable(false);

    const int frame = 2 * m_list->frameWidth();
    const int rowHeight = m_list->sizeHintForRow(0);
    const int scrollBar = m_list->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    m_list->setMinimumSize(m_list->header()->length() + frame + scrollBar, 6 * rowHeight);
}

/// All examples without scrolling, where the screen allows it.
QSize SearchHelpSheet::sizeHint() const
{
    const int rows = m_list->topLevelItemCount() * m_list->sizeHintForRow(0);
    const int list = rows + m_list->header()->sizeHint().height() + 2 * m_list->frameWidth();
    const QSize hint = QDialog::sizeHint();
    return {hint.width(), layout()->heightForWidth(hint.width()) - m_list->sizeHint().height() + list};
}

void SearchHelpSheet::choose(QTreeWidgetItem *item)
{
    const int row = m_list->indexOfTopLevelItem(item);
    if (row < 0)
        return;
    accept();
    Q_EMIT chosen(m_examples.at(row));
}

} // namespace runebook
