#pragma once

#include "document/NameUses.h"

#include <QAbstractTableModel>

namespace runebook {

/// Uses of names as rows: record, field, what stands there; while names are followed also what will stand
/// there, with a tick for each.
class UsesModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { RecordColumn, FieldColumn, NowColumn, ThenColumn };

    explicit UsesModel(QObject *parent = nullptr) : QAbstractTableModel(parent) { }
    /// Not owned; null before it goes. All are ticked.
    void setUses(const NameUses *uses);
    bool isChosen(std::size_t use) const { return m_isChosen[use]; }
    qsizetype countOfChosen() const { return m_chosen; }
    void setChosen(const QModelIndexList &rows, bool isChosen);
    const NameUse *useAt(const QModelIndex &index) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    void chosenChanged();

private:
    QString textOf(const QModelIndex &index) const;

    const NameUses *m_uses = nullptr;
    std::vector<bool> m_isChosen;
    qsizetype m_chosen = 0;
};

} // namespace runebook
