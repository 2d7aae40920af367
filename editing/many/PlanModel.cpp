#include "editing/many/PlanModel.h"

#include "editing/fields/PreviewMark.h"
#include "platform/PlainText.h"

namespace runebook {

using namespace Qt::StringLiterals;

void PlanModel::setPlan(RecordPlan *plan)
{
    beginResetModel();
    m_plan = plan;
    m_headings = plan ? plan->headings() : QStringList();
    m_rows = plan ? static_cast<int>(plan->countOfRows()) : 0;
    endResetModel();
}

void PlanModel::showMore()
{
    const int rows = m_plan ? static_cast<int>(m_plan->countOfRows()) : 0;
    if (m_rows > 0)
        Q_EMIT dataChanged(index(0, 0), index(m_rows - 1, remarkColumn()));
    if (rows <= m_rows)
        return;
    beginInsertRows({}, m_rows, rows - 1);
    m_rows = rows;
    endInsertRows();
}

int PlanModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int PlanModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_plan ? 0 : static_cast<int>(m_headings.size()) + 1;
}

QString PlanModel::remarkAt(qsizetype row) const
{
    const RecordPlan::Remark remark = m_plan->remark(row);
    return remark.isLeftOut ? tr("Left out: %1").arg(remark.text) : remark.text;
}

QString PlanModel::textAt(const QModelIndex &index) const
{
    return index.column() == remarkColumn() ? remarkAt(index.row())
                                            : m_plan->text(index.row(), index.column());
}

QVariant PlanModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !m_plan)
        return {};
    const bool isTaken = m_plan->isTaken(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return textAt(index);
    case Qt::ToolTipRole:
        return escapedToolTip(textAt(index));
    case Qt::AccessibleTextRole:
        return m_headings.value(index.column(), tr("Remark")) + u": "_s + textAt(index);
    case Qt::CheckStateRole:
        if (index.column() == 0)
            return int(isTaken ? Qt::Checked : Qt::Unchecked);
        return {};
    case PreviewMark::kRole:
        if (index.column() == m_plan->changedColumn() && isTaken)
            return int(PreviewMark::Changed);
        return int(index.column() == remarkColumn() && m_plan->remark(index.row()).isLeftOut
                       ? PreviewMark::Refused
                       : PreviewMark::None);
    default:
        return {};
    }
}

QVariant PlanModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return m_headings.value(section, tr("Remark"));
}

Qt::ItemFlags PlanModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
    if (!index.isValid() || !m_plan || index.column() != 0 || m_plan->remark(index.row()).isLeftOut)
        return usual;
    return usual | Qt::ItemIsUserCheckable;
}

bool PlanModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !(flags(index) & Qt::ItemIsUserCheckable))
        return false;
    m_plan->setTaken(index.row(), value.toInt() == Qt::Checked);
    Q_EMIT dataChanged(index, index.siblingAtColumn(remarkColumn()));
    Q_EMIT takenChanged();
    return true;
}

} // namespace runebook
