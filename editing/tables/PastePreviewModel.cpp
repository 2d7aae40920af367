#include "editing/tables/PastePreviewModel.h"

#include "editing/fields/GlyphColumns.h"
#include "platform/PlainText.h"

#include <QLocale>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

void PastePreviewModel::setPlan(const PastePlan *plan, const PastedTable *table, const PasteChoices &choices)
{
    beginResetModel();
    m_plan = plan;
    m_table = table;
    m_choices = choices;
    m_fields.clear();
    for (const std::optional<GlyphField> field : choices.fields) {
        if (field)
            m_fields.push_back(*field);
    }
    endResetModel();
}

int PastePreviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_plan ? 0 : static_cast<int>(m_plan->rows().size());
}

int PastePreviewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : FirstFieldColumn + static_cast<int>(m_fields.size());
}

int PastePreviewModel::columnOf(std::optional<GlyphField> field) const
{
    const auto it = std::find(m_fields.begin(), m_fields.end(), field);
    return it == m_fields.end() ? int(RowColumn) : FirstFieldColumn + static_cast<int>(it - m_fields.begin());
}

PreviewMark::Kind PastePreviewModel::markOf(const PastePlan::Row &row, GlyphField field)
{
    const quint32 bit = PastePlan::bitOf(field);
    return row.refused & bit ? PreviewMark::Refused
        : row.changed & bit  ? PreviewMark::Changed
                             : PreviewMark::None;
}

QString PastePreviewModel::cellOf(const PastePlan::Row &row, GlyphField field) const
{
    return m_table->cell(row.tableRow, m_choices.columnOf(field));
}

QString PastePreviewModel::fieldText(const PastePlan::Row &row, GlyphField field) const
{
    const QString before = row.info ? cellDisplayText(*row.info, field) : QString();
    switch (markOf(row, field)) {
    case PreviewMark::Refused:
        return u"✗ "_s + cellDisplayText(cellOf(row, field));
    case PreviewMark::Changed: {
        const QString after = cellDisplayText(m_plan->valueAfter(row, field));
        return row.info ? before + u" → "_s + after : after;
    }
    case PreviewMark::None:
        break;
    }
    return row.info ? before : cellDisplayText(cellOf(row, field));
}

QString PastePreviewModel::textOf(const PastePlan::Row &row, int column) const
{
    if (column == RowColumn)
        return QLocale().toString(qlonglong(PastePlan::numberOf(row)));
    if (column == RecordColumn)
        return row.info ? cellDisplayText(*row.info, GlyphField::Name) : QString();
    if (column != StateColumn)
        return fieldText(row, fieldAt(column));
    switch (row.state) {
    case PastePlan::State::Changed:
        return tr("Changes");
    case PastePlan::State::New:
        return tr("Is new");
    case PastePlan::State::Unmatched:
        return tr("Matches nothing");
    case PastePlan::State::Refused:
        return tr("Left out");
    case PastePlan::State::Same:
        break;
    }
    return tr("Stays");
}

QString PastePreviewModel::reasonAt(const QModelIndex &index) const
{
    const auto number = static_cast<quint32>(index.row());
    const auto &refusals = m_plan->refusals();
    const auto isBefore = [](const PastePlan::Refusal &refusal, quint32 row) { return refusal.row < row; };
    for (auto it = std::lower_bound(refusals.begin(), refusals.end(), number, isBefore);
         it != refusals.end() && it->row == number; ++it) {
        if (columnOf(it->field) == index.column() || (!it->field && index.column() == StateColumn))
            return it->reason;
    }
    return {};
}

QString PastePreviewModel::spokenText(const QModelIndex &index) const
{
    const PastePlan::Row &row = m_plan->rows()[static_cast<std::size_t>(index.row())];
    const QString title = headerData(index.column(), Qt::Horizontal).toString();
    if (index.column() < FirstFieldColumn)
        return title + u": "_s + textOf(row, index.column());
    const GlyphField field = fieldAt(index.column());
    switch (markOf(row, field)) {
    case PreviewMark::Changed:
        return tr("%1: %2 becomes %3")
            .arg(title, row.info ? cellDisplayText(*row.info, field) : QString(),
                 cellDisplayText(m_plan->valueAfter(row, field)));
    case PreviewMark::Refused:
        return tr("%1: %2 is left out. %3").arg(title, cellDisplayText(cellOf(row, field)), reasonAt(index));
    case PreviewMark::None:
        break;
    }
    return title + u": "_s + fieldText(row, field);
}

QVariant PastePreviewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !m_plan)
        return {};
    const PastePlan::Row &row = m_plan->rows()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return textOf(row, index.column());
    case Qt::ToolTipRole: {
        const QString reason = reasonAt(index);
        return reason.isEmpty() ? QVariant() : QVariant(escapedToolTip(reason));
    }
    case Qt::AccessibleTextRole:
        return spokenText(index);
    case PreviewMark::kRole: {
        const bool isOut = index.column() == StateColumn && row.state == PastePlan::State::Refused;
        return int(index.column() >= FirstFieldColumn ? markOf(row, fieldAt(index.column()))
                       : isOut                        ? PreviewMark::Refused
                                                      : PreviewMark::None);
    }
    default:
        return {};
    }
}

QVariant PastePreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= columnCount())
        return {};
    switch (section) {
    case RowColumn:
        return tr("Row");
    case StateColumn:
        return tr("What Happens");
    case RecordColumn:
        return tr("Record");
    default:
        return fieldTitle(fieldAt(section));
    }
}

} // namespace runebook
