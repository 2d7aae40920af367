#pragma once

#include "editing/many/RecordPlan.h"

#include <QAbstractTableModel>

namespace runebook {

/// The rows of a plan as a table: each can be taken out by a tick, what changes is marked, and the last
/// column says what is special. The plan belongs to somebody else, who tells when it has grown.
class PlanModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit PlanModel(QObject *parent = nullptr) : QAbstractTableModel(parent) { }
    /// Null for none.
    void setPlan(RecordPlan *plan);
    /// Rows that have been found out since, and remarks of those before.
    void showMore();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

Q_SIGNALS:
    /// Somebody has taken rows in or out.
    void takenChanged();

private:
    int remarkColumn() const { return columnCount() - 1; }
    QString textAt(const QModelIndex &index) const;
    QString remarkAt(qsizetype row) const;

    RecordPlan *m_plan = nullptr;
    QStringList m_headings;
    int m_rows = 0;
};

} // namespace runebook
