#include "editing/fields/PreviewTable.h"

#include "editing/fields/PreviewMark.h"
#include "editing/fields/SignalColors.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

namespace runebook {

namespace {

constexpr int kWidest = 36; // average characters
constexpr int kRowsThatSizeColumns = 100;

/// Values that change stand on a tint and in bold, those left out on another.
class PreviewDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const int mark = index.data(PreviewMark::kRole).toInt();
        if (mark == PreviewMark::None)
            return;
        const bool isChange = mark == PreviewMark::Changed;
        option->font.setBold(isChange);
        option->backgroundBrush =
            isChange ? SignalColors::inserted(option->palette) : SignalColors::removed(option->palette);
    }
};

} // namespace

PreviewTable::PreviewTable(QWidget *parent) : QTableView(parent)
{
    setAccessibleName(tr("Preview"));
    setItemDelegate(new PreviewDelegate(this));
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setResizeContentsPrecision(kRowsThatSizeColumns);
}

void PreviewTable::fitColumns()
{
    const int most = fontMetrics().averageCharWidth() * kWidest;
    resizeColumnsToContents();
    for (int column = 0; column < model()->columnCount(); ++column)
        setColumnWidth(column, qMin(columnWidth(column), most));
}

void PreviewTable::keyPressEvent(QKeyEvent *event)
{
    const QModelIndex first = currentIndex().siblingAtColumn(0);
    if (event->key() != Qt::Key_Space || !(first.flags() & Qt::ItemIsUserCheckable)) {
        QTableView::keyPressEvent(event);
        return;
    }
    // All selected rows follow the current one.
    const int state = first.data(Qt::CheckStateRole).toInt() == Qt::Checked ? Qt::Unchecked : Qt::Checked;
    for (const QModelIndex &row : selectionModel()->selectedRows())
        model()->setData(row, state, Qt::CheckStateRole);
}

} // namespace runebook
