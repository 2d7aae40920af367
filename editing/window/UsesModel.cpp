#include "editing/window/UsesModel.h"

#include "editing/fields/GlyphColumns.h"

namespace runebook {

using namespace Qt::StringLiterals;

void UsesModel::setUses(const NameUses *uses)
{
    beginResetModel();
    m_uses = uses;
    m_isChosen.assign(uses ? uses->uses().size() : 0, true);
    m_chosen = std::ssize(m_isChosen);
    endResetModel();
    Q_EMIT chosenChanged();
}

void UsesModel::setChosen(const QModelIndexList &rows, bool isChosen)
{
    for (const QModelIndex &index : rows) {
        const auto row = static_cast<std::size_t>(index.row());
        if (m_isChosen[row] == isChosen)
            continue;
        m_isChosen[row] = isChosen;
        m_chosen += isChosen ? 1 : -1;
        Q_EMIT dataChanged(index.siblingAtColumn(0), index.siblingAtColumn(columnCount() - 1));
    }
    Q_EMIT chosenChanged();
}

const NameUse *UsesModel::useAt(const QModelIndex &index) const
{
    return m_uses && index.isValid() ? &m_uses->uses()[static_cast<std::size_t>(index.row())] : nullptr;
}

int UsesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_isChosen.size());
}

int UsesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_uses ? 0 : m_uses->isRenaming() ? ThenColumn + 1 : NowColumn + 1;
}

QString UsesModel::textOf(const QModelIndex &index) const
{
    const NameUse &use = *useAt(index);
    switch (index.column()) {
    case RecordColumn:
        return cellDisplayText(*use.info, GlyphField::Name);
    case FieldColumn:
        return fieldTitle(use.field);
    case NowColumn:
        return cellDisplayText(*use.info, use.field);
    default:
        return cellDisplayText(m_uses->textAfter(use));
    }
}

QVariant UsesModel::data(const QModelIndex &index, int role) const
{
    if (!useAt(index))
        return {};
    const bool isChosen = m_isChosen[static_cast<std::size_t>(index.row())];
    const bool hasTick = m_uses->isRenaming() && index.column() == RecordColumn;
    switch (role) {
    case Qt::DisplayRole:
        return textOf(index);
    case Qt::CheckStateRole:
        return hasTick ? QVariant(isChosen ? Qt::Checked : Qt::Unchecked) : QVariant();
    case Qt::AccessibleTextRole:
        return tr("%1: %2").arg(headerData(index.column(), Qt::Horizontal).toString(), textOf(index));
    default:
        return {};
    }
}

bool UsesModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !useAt(index))
        return false;
    setChosen({index}, value.toInt() == Qt::Checked);
    return true;
}

QVariant UsesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case RecordColumn:
        return tr("Record");
    case FieldColumn:
        return tr("Field");
    case NowColumn:
        return m_uses && m_uses->isRenaming() ? tr("Now") : tr("Value");
    default:
        return tr("Becomes");
    }
}

Qt::ItemFlags UsesModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    const bool hasTick = m_uses && m_uses->isRenaming() && index.column() == RecordColumn;
    return hasTick ? flags | Qt::ItemIsUserCheckable : flags;
}

} // namespace runebook
