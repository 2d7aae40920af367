#pragma once

#include "editing/many/ListEntries.h"

#include <QAbstractTableModel>

namespace runebook {

/// The entries that several records have in a field, with the number of these records: a tick on those that
/// all have, half a one on those of some. Ticking adds one to all, taking the tick away removes it from all.
class EntriesModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { EntryColumn, RecordsColumn, WhatHappensColumn, ColumnCount };

    explicit EntriesModel(QObject *parent) : QAbstractTableModel(parent) { }
    /// Of so many records; nothing is wished yet.
    void setCounts(std::vector<EntryCounts::Count> counts, qsizetype records);
    /// What the ticks stand for.
    EntryChange change(GlyphField field) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

Q_SIGNALS:
    void wishesChanged();

private:
    enum class Wish : quint8 { AsItIs, ForAll, ForNone };
    struct Row {
        EntryCounts::Count count;
        Wish wish = Wish::AsItIs;
    };
    bool isForAll(const Row &row) const { return row.count.records == m_records; }
    Qt::CheckState stateOf(const Row &row) const;
    QString textAt(const Row &row, int column) const;

    std::vector<Row> m_rows;
    qsizetype m_records = 0;
};

} // namespace runebook
