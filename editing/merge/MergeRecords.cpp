#include "editing/merge/MergeRecords.h"

namespace runebook {

using namespace Qt::StringLiterals;

std::vector<quint32> recordsOfMode(const ThreeWayMerge &merge, MergeMode mode)
{
    const auto isListed = [mode](MergeState state) {
        switch (mode) {
        case MergeMode::Conflicts:
            return state == MergeState::Conflict;
        case MergeMode::FromTheirs:
            return state == MergeState::Theirs || state == MergeState::Merged;
        case MergeMode::FromOurs:
            return state == MergeState::Ours || state == MergeState::Merged;
        case MergeMode::Both:
            return state == MergeState::Both;
        }
        return false;
    };
    std::vector<quint32> numbers;
    if (mode == MergeMode::Conflicts && merge.isHeaderInConflict())
        numbers.push_back(quint32(merge.records().size()));
    for (std::size_t i = 0; i < merge.records().size(); ++i) {
        if (isListed(merge.records()[i].state))
            numbers.push_back(quint32(i));
    }
    return numbers;
}

MergeRecords::MergeRecords(const MergeResolution &resolution, QObject *parent)
    : QAbstractListModel(parent), m_resolution(resolution)
{
    for (int mode = 0; mode < kMergeModeCount; ++mode)
        m_numbers[std::size_t(mode)] = recordsOfMode(resolution.merge(), MergeMode(mode));
}

void MergeRecords::setMode(MergeMode mode)
{
    beginResetModel();
    m_mode = mode;
    endResetModel();
}

qsizetype MergeRecords::numberAt(int row) const
{
    return row >= 0 && row < count(m_mode) ? qsizetype(m_numbers[std::size_t(m_mode)][std::size_t(row)]) : -1;
}

int MergeRecords::openRow(int row, int step) const
{
    const int rows = rowCount();
    int at = row < 0 && step < 0 ? 0 : row;
    for (int i = 0; i < rows; ++i) {
        at = (at + step + rows) % rows;
        if (!m_resolution.isResolved(std::size_t(numberAt(at))))
            return at;
    }
    return -1;
}

void MergeRecords::showStates()
{
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

int MergeRecords::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(count(m_mode));
}

QVariant MergeRecords::data(const QModelIndex &index, int role) const
{
    const qsizetype number = numberAt(index.row());
    if (number < 0 || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
        return {};
    constexpr qsizetype kLongest = 200;
    const QString key = m_resolution.keyOf(std::size_t(number)).left(kLongest);
    if (m_mode != MergeMode::Conflicts)
        return key;
    const bool isResolved = m_resolution.isResolved(std::size_t(number));
    if (role == Qt::AccessibleTextRole)
        return isResolved ? tr("%1, resolved").arg(key) : tr("%1, conflict").arg(key);
    return (isResolved ? u"✓ "_s : u"● "_s) + key;
}

} // namespace runebook
