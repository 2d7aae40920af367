#pragma once

#include "editing/merge/MergeResolution.h"

#include <QAbstractListModel>

namespace runebook {

/// Which records of a merge are listed. What was put together from both sides is taken from either.
enum class MergeMode { Conflicts, FromTheirs, FromOurs, Both };
inline constexpr int kMergeModeCount = 4;

/// The numbers of the records that \a mode lists; a header in conflict comes first, with the number behind
/// all records.
std::vector<quint32> recordsOfMode(const ThreeWayMerge &merge, MergeMode mode);

/// The keys of the records of one mode; conflicts that are resolved have a mark.
class MergeRecords : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit MergeRecords(const MergeResolution &resolution, QObject *parent = nullptr);

    void setMode(MergeMode mode);
    MergeMode mode() const { return m_mode; }
    qsizetype count(MergeMode mode) const { return std::ssize(m_numbers[std::size_t(mode)]); }
    /// Of the record in \a row; -1 for none.
    qsizetype numberAt(int row) const;
    /// The next row with an open conflict behind \a row, or before it; from the other end where there is
    /// none; -1 where there is none at all.
    int openRow(int row, int step) const;
    void showStates();

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    const MergeResolution &m_resolution;
    std::array<std::vector<quint32>, kMergeModeCount> m_numbers;
    MergeMode m_mode = MergeMode::Conflicts;
};

} // namespace runebook
