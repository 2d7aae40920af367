#include "editing/many/EntriesModel.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/fields/PreviewMark.h"

#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

} // namespace

void EntriesModel::setCounts(std::vector<EntryCounts::Count> counts, qsizetype records)
{
    beginResetModel();
    m_rows.clear();
    for (EntryCounts::Count &count : counts)
        m_rows.push_back({std::move(count), Wish::AsItIs});
    m_records = records;
    endResetModel();
}

EntryChange EntriesModel::change(GlyphField field) const
{
    EntryChange change {field, {}, {}};
    for (const Row &row : m_rows) {
        if (row.wish == Wish::ForAll)
            change.added << row.count.entry;
        else if (row.wish == Wish::ForNone)
            change.removed << row.count.entry;
    }
    return change;
}

int EntriesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int EntriesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

Qt::CheckState EntriesModel::stateOf(const Row &row) const
{
    if (row.wish == Wish::ForNone)
        return Qt::Unchecked;
    return row.wish == Wish::ForAll || isForAll(row) ? Qt::Checked : Qt::PartiallyChecked;
}

QString EntriesModel::textAt(const Row &row, int column) const
{
    if (column == EntryColumn)
        return cellDisplayText(row.count.entry);
    if (column == RecordsColumn)
        return isForAll(row) ? tr("All %1").arg(number(m_records))
                             : tr("%1 of %2").arg(number(row.count.records), number(m_records));
    switch (row.wish) {
    case Wish::ForAll:
        return tr("Is added to %1").arg(number(m_records - row.count.records));
    case Wish::ForNone:
        return tr("Is removed from %1").arg(number(row.count.records));
    case Wish::AsItIs:
        break;
    }
    return tr("Stays");
}

QVariant EntriesModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Row &row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return textAt(row, index.column());
    case Qt::AccessibleTextRole:
        return headerData(index.column(), Qt::Horizontal).toString() + u": "_s + textAt(row, index.column());
    case Qt::CheckStateRole:
        return index.column() == EntryColumn ? QVariant(stateOf(row)) : QVariant();
    case PreviewMark::kRole:
        if (index.column() == RecordsColumn)
            return int(PreviewMark::None);
        return int(row.wish == Wish::ForAll        ? PreviewMark::Changed
                       : row.wish == Wish::ForNone ? PreviewMark::Refused
                                                   : PreviewMark::None);
    default:
        return {};
    }
}

QVariant EntriesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case EntryColumn:
        return tr("Entry");
    case RecordsColumn:
        return tr("Records");
    default:
        return tr("What Happens");
    }
}

Qt::ItemFlags EntriesModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
    return index.column() == EntryColumn ? usual | Qt::ItemIsUserCheckable : usual;
}

bool EntriesModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid())
        return false;
    Row &row = m_rows[static_cast<std::size_t>(index.row())];
    // What some have goes round: to all, to none, as it is.
    if (value.toInt() == Qt::Unchecked)
        row.wish = Wish::ForNone;
    else
        row.wish = isForAll(row) || row.wish == Wish::ForNone ? Wish::AsItIs : Wish::ForAll;
    Q_EMIT dataChanged(index.siblingAtColumn(0), index.siblingAtColumn(WhatHappensColumn));
    Q_EMIT wishesChanged();
    return true;
}

} // namespace runebook
