#include "editing/compare/CompareLists.h"

#include <QSet>

namespace runebook {

namespace {

constexpr char kOnlyToCompare[] = "isOnlyToCompare";

} // namespace

void setOnlyToCompare(VXDocument &document)
{
    document.setProperty(kOnlyToCompare, true);
}

bool isOnlyToCompare(const VXDocument *document)
{
    return document && document->property(kOnlyToCompare).toBool() && !document->windowController();
}

// DocumentChoice

QList<QObject *> DocumentChoice::arrangedObjects() const
{
    QList<QObject *> documents;
    for (const QPointer<VXDocument> &document : m_documents)
        documents << document;
    return documents;
}

void DocumentChoice::setContent(const QList<VXDocument *> &documents)
{
    const VXDocument *chosen = document();
    beginResetModel();
    m_documents.clear();
    for (VXDocument *document : documents)
        m_documents << document;
    const auto kept = chosen ? documents.indexOf(chosen) : -1;
    m_selectionIndex = kept >= 0 ? static_cast<int>(kept) : documents.isEmpty() ? -1 : 0;
    endResetModel();
    Q_EMIT selectionIndexChanged();
}

void DocumentChoice::setSelectionIndex(int index)
{
    if (index < 0 || index >= m_documents.size() || index == m_selectionIndex)
        return;
    m_selectionIndex = index;
    Q_EMIT selectionIndexChanged();
}

QList<QObject *> DocumentChoice::selectedObjects() const
{
    VXDocument *chosen = document();
    return chosen ? QList<QObject *> {chosen} : QList<QObject *>();
}

VXDocument *DocumentChoice::document() const
{
    return m_documents.value(m_selectionIndex);
}

int DocumentChoice::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_documents.size());
}

QVariant DocumentChoice::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || role != Qt::DisplayRole)
        return {};
    const VXDocument *document = m_documents.value(index.row());
    if (!document)
        return tr("(closed)");
    const QString title = document->windowTitle();
    return isOnlyToCompare(document) ? tr("%1, read-only").arg(title) : title;
}

// KeyList

KeyList::KeyList(QObject *parent) : QAbstractListModel(parent), m_selection(this)
{
    connect(&m_selection, &QItemSelectionModel::selectionChanged, this, &KeyList::selectionChanged);
}

void KeyList::setContent(const QStringList &keys, std::optional<IndexSet> rows)
{
    const QStringList selected = rows ? QStringList() : selectedObjects();
    {
        const QSignalBlocker silence(&m_selection);
        beginResetModel();
        m_keys = keys;
        endResetModel();
    }
    IndexSet wanted = rows ? std::move(*rows) : rowsOf(selected);
    if (wanted.empty() && !keys.isEmpty())
        wanted.push_back(0);
    {
        const QSignalBlocker silence(this);
        select(wanted);
    }
    Q_EMIT selectionChanged();
}

IndexSet KeyList::rowsOf(const QStringList &keys) const
{
    const QSet<QString> wanted(keys.begin(), keys.end());
    IndexSet rows;
    for (qsizetype row = 0; row < m_keys.size() && !wanted.isEmpty(); ++row) {
        if (wanted.contains(m_keys.at(row)))
            rows.push_back(row);
    }
    return rows;
}

QStringList KeyList::selectedObjects() const
{
    // A million texts are not gathered one by one only because all of them are selected.
    if (selectedCount() == m_keys.size())
        return m_keys;
    QStringList keys;
    for (const qsizetype row : selectionIndexes())
        keys << m_keys.at(row);
    return keys;
}

qsizetype KeyList::selectedCount() const
{
    qsizetype count = 0;
    for (const QItemSelectionRange &range : m_selection.selection())
        count += range.height();
    return count;
}

IndexSet KeyList::selectionIndexes() const
{
    std::vector<qsizetype> rows;
    // By ranges: a list of one index for each of a million rows would take its time.
    for (const QItemSelectionRange &range : m_selection.selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    }
    return IndexSet(std::move(rows));
}

bool KeyList::setSelectionIndexes(const IndexSet &indexes)
{
    for (const qsizetype row : indexes) {
        if (row < 0 || row >= m_keys.size())
            return false;
    }
    select(indexes);
    return true;
}

void KeyList::select(const IndexSet &rows)
{
    QItemSelection selection;
    for (std::size_t i = 0; i < rows.size();) {
        std::size_t end = i + 1;
        while (end < rows.size() && rows[end] == rows[end - 1] + 1)
            ++end;
        selection.select(index(static_cast<int>(rows[i])), index(static_cast<int>(rows[end - 1])));
        i = end;
    }
    if (!rows.empty())
        m_selection.setCurrentIndex(index(static_cast<int>(rows.front())), QItemSelectionModel::NoUpdate);
    m_selection.select(selection, QItemSelectionModel::ClearAndSelect);
}

int KeyList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_keys.size());
}

QVariant KeyList::data(const QModelIndex &index, int role) const
{
    return index.isValid() && role == Qt::DisplayRole ? m_keys.value(index.row()) : QVariant();
}

} // namespace runebook
