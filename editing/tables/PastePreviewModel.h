#pragma once

#include "editing/fields/PreviewMark.h"
#include "editing/tables/PastePlan.h"

#include <QAbstractTableModel>

namespace runebook {

/// What pasting a table would do, row by row: which row, what happens, to which record, and each field before
/// and after. Plan and table belong to somebody else, who tells of another plan.
class PastePreviewModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { RowColumn, StateColumn, RecordColumn, FirstFieldColumn };

    explicit PastePreviewModel(QObject *parent = nullptr) : QAbstractTableModel(parent) { }
    void setPlan(const PastePlan *plan, const PastedTable *table, const PasteChoices &choices);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    /// The column of a field; that of the rows' numbers for nothing.
    int columnOf(std::optional<GlyphField> field) const;

private:
    GlyphField fieldAt(int column) const
    {
        return m_fields[static_cast<std::size_t>(column - FirstFieldColumn)];
    }
    static PreviewMark::Kind markOf(const PastePlan::Row &row, GlyphField field);
    QString textOf(const PastePlan::Row &row, int column) const;
    QString fieldText(const PastePlan::Row &row, GlyphField field) const;
    QString cellOf(const PastePlan::Row &row, GlyphField field) const;
    QString reasonAt(const QModelIndex &index) const;
    QString spokenText(const QModelIndex &index) const;

    const PastePlan *m_plan = nullptr;
    const PastedTable *m_table = nullptr;
    PasteChoices m_choices;
    std::vector<GlyphField> m_fields;
};

} // namespace runebook
