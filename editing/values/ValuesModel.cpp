#include "editing/values/ValuesModel.h"

#include "editing/fields/GlyphColumns.h"
#include "platform/PlainText.h"

#include <QLocale>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

} // namespace

ValuesModel::ValuesModel(ValueCounts &counts, QObject *parent) : QAbstractTableModel(parent), m_counts(counts)
{
    connect(&counts, &ValueCounts::changed, this, &ValuesModel::noteCounts);
    connect(&m_timer, &QTimer::timeout, this, &ValuesModel::runSlice);
    listAnew();
}

// What is listed

void ValuesModel::setOrder(const ValueOrder &order)
{
    if (order == m_order)
        return;
    m_order = order;
    listAnew();
}

void ValuesModel::sort(int column, Qt::SortOrder direction)
{
    ValueOrder order = m_order;
    order.by = column == CountColumn ? ValueOrder::By::Count : ValueOrder::By::Text;
    order.direction = direction;
    setOrder(order);
}

void ValuesModel::setChosen(const ChosenValues &chosen)
{
    if (chosen == m_chosen)
        return;
    m_chosen = chosen;
    listAnew();
}

void ValuesModel::setHeld(bool isHeld)
{
    if (std::exchange(m_isHeld, isHeld) && !isHeld)
        listAnew();
}

void ValuesModel::noteCounts()
{
    if (m_counts.isComplete())
        listAnew();
    else
        m_isStale = true;
}

/// In the next turn of the event loop: many edits are listed once.
void ValuesModel::listAnew()
{
    m_isStale = true;
    std::vector<Value> always;
    for (const QStringList &texts : {m_chosen.only, m_chosen.without}) {
        for (const QString &text : texts)
            always.push_back(m_counts.numberOf(text));
    }
    m_listed.start(m_order, always);
    m_timer.start(0);
}

void ValuesModel::runSlice()
{
    constexpr int kSliceMs = 5;
    if (m_isHeld || !m_counts.isComplete()) {
        m_timer.stop();
        return;
    }
    if (!m_listed.runUntil(m_counts, QDeadlineTimer(kSliceMs)))
        return;
    m_timer.stop();
    takeListed();
}

void ValuesModel::takeListed()
{
    const std::vector<Value> &rows = m_listed.values();
    m_largest = 0;
    for (const Value value : rows)
        m_largest = std::max(m_largest, m_counts.shown(value));
    m_isStale = false;
    if (rows == m_rows && !rows.empty()) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
    } else {
        Q_EMIT rowsAboutToChange();
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }
    Q_EMIT rowsChanged();
}

bool ValuesModel::canBeChosen(const QModelIndex &index) const
{
    return index.isValid() && m_rows[static_cast<std::size_t>(index.row())] != ValueCounts::kLong;
}

QModelIndex ValuesModel::indexOfText(const QString &text) const
{
    for (int row = 0; row < rowCount(); ++row) {
        const QModelIndex found = index(row, ValueColumn);
        if (found.data(TextRole).toString() == text && canBeChosen(found))
            return found;
    }
    return {};
}

QString ValuesModel::lineOf(int row) const
{
    const Value value = m_rows[static_cast<std::size_t>(row)];
    return ListedValues::titleOf(m_counts, value) + u'\t' + QString::number(m_counts.shown(value)) + u'\n';
}

// The item model

int ValuesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ValuesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

ValuesModel::State ValuesModel::stateOf(Value value) const
{
    if (m_chosen.isEmpty() || value == ValueCounts::kLong)
        return State::Free;
    const QString text = m_counts.text(value);
    return m_chosen.only.contains(text)   ? State::Only
        : m_chosen.without.contains(text) ? State::Without
                                          : State::Free;
}

QString ValuesModel::spokenText(Value value) const
{
    const qsizetype count = m_counts.shown(value);
    QString text = ListedValues::titleOf(m_counts, value) + u": "_s
        + (count == 1 ? tr("1 record") : tr("%1 records").arg(numberText(count)));
    if (const State state = stateOf(value); state != State::Free)
        text += u", "_s + (state == State::Only ? tr("chosen") : tr("left out"));
    return text;
}

QVariant ValuesModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Value value = m_rows[static_cast<std::size_t>(index.row())];
    const bool isText = index.column() == ValueColumn;
    switch (role) {
    case Qt::DisplayRole:
        return isText ? cellDisplayText(ListedValues::titleOf(m_counts, value))
                      : numberText(m_counts.shown(value));
    case Qt::EditRole:
    case TextRole:
        return m_counts.text(value);
    case Qt::ToolTipRole:
        return escapedToolTip(spokenText(value));
    case Qt::AccessibleTextRole:
        return spokenText(value);
    case Qt::TextAlignmentRole:
        return int((isText ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
    case ShareRole:
        return m_largest > 0 ? double(m_counts.shown(value)) / double(m_largest) : 0;
    case StateRole:
        return int(stateOf(value));
    default:
        return {};
    }
}

bool ValuesModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    const QString from = index.data(TextRole).toString();
    if (value.toString() != from)
        Q_EMIT renameRequested(from, value.toString());
    return true;
}

QVariant ValuesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == ValueColumn ? tr("Value") : tr("Records");
}

Qt::ItemFlags ValuesModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (m_isEditable && index.column() == ValueColumn && canBeChosen(index))
        flags |= Qt::ItemIsEditable;
    return flags;
}

} // namespace runebook
