#pragma once

#include "editing/values/ChosenValues.h"
#include "editing/values/ListedValues.h"

#include <QAbstractTableModel>
#include <QTimer>

namespace runebook {

/// The values that counts have found, as rows: value and number of records, in any order, narrowed by a text.
/// Follows the counts, in slices of idle time where there are very many.
class ValuesModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { ValueColumn, CountColumn, ColumnCount };
    enum class State { Free, Only, Without };
    enum Role {
        ShareRole = Qt::UserRole, ///< of the largest count, from 0 to 1
        StateRole, ///< a State
        TextRole, ///< the value itself; empty for none
    };
    explicit ValuesModel(ValueCounts &counts, QObject *parent = nullptr);

public: // what is listed
    const ValueOrder &order() const { return m_order; }
    void setOrder(const ValueOrder &order);
    void sort(int column, Qt::SortOrder direction) override;
    const ChosenValues &chosen() const { return m_chosen; }
    void setChosen(const ChosenValues &chosen);
    /// Whether values can be given another text.
    void setEditable(bool isEditable) { m_isEditable = isEditable; }
    /// Whether the rows are those of the counts as they are now.
    bool isUpToDate() const { return !m_isStale; }
    /// How many values there are to list; rows are the first of them.
    qsizetype found() const { return m_listed.found(); }
    /// While one is typed into, rows stay as they are.
    void setHeld(bool isHeld);
    /// Whether a row is a value that can be chosen.
    bool canBeChosen(const QModelIndex &index) const;
    QModelIndex indexOfText(const QString &text) const;
    /// The row for a table: text and count.
    QString lineOf(int row) const;

public: // the item model
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    void rowsAboutToChange();
    /// After them, and whenever the rows have become true again.
    void rowsChanged();
    void renameRequested(const QString &from, const QString &to);

private:
    using Value = ValueCounts::Value;

    void noteCounts();
    void listAnew();
    void runSlice();
    void takeListed();
    State stateOf(Value value) const;
    QString spokenText(Value value) const;

    ValueCounts &m_counts;
    ValueOrder m_order;
    ChosenValues m_chosen;
    ListedValues m_listed;
    std::vector<Value> m_rows;
    qsizetype m_largest = 0;
    QTimer m_timer;
    bool m_isStale = true;
    bool m_isHeld = false;
    bool m_isEditable = true;
};

} // namespace runebook
