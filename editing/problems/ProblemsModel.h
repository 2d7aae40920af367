#pragma once

#include "editing/problems/Problems.h"

#include <QAbstractTableModel>

namespace runebook {

/// The problems of one kind, or of all, as the rows of a table. Very many are gathered in slices of idle
/// time; the rows before stay until the new ones are complete.
class ProblemsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, UnicodeColumn, ExplanationColumn, ColumnCount };

    explicit ProblemsModel(const Problems &problems, QObject *parent = nullptr);

    void setKinds(ProblemKindSet kinds);
    ProblemKindSet kinds() const { return m_kinds; }
    /// The one kind whose problems are listed; nothing when there are several.
    std::optional<ProblemKind> kind() const;
    /// Gathers the rows anew; to be called when the problems have changed.
    void refresh();
    bool isComplete() const { return !m_timer.isActive(); }
    std::span<const Problem> problems() const { return m_rows; }
    /// The row of a problem, or -1. Searches from \a likelyRow on.
    int rowOf(const Problem &problem, int likelyRow) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// Before and after the rows are other ones.
    void rowsAboutToChange();
    void rowsChanged();

private:
    void gather();

    const Problems &m_problems;
    ProblemKindSet m_kinds = kAllProblemKinds & ~kHintKinds;
    std::vector<Problem> m_rows;
    std::vector<Problem> m_gathered;
    qsizetype m_next = 0; ///< place in the document's list
    QTimer m_timer;
};

} // namespace runebook
