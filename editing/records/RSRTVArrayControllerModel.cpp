// The list controller as an item model: cells, in-place editing, and rows that are dragged.
#include "editing/fields/DelegateOperation.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/ListTable.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/records/TableDrag.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QMimeData>

using namespace runebook;
using namespace Qt::StringLiterals;

int RSRTVArrayController::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int RSRTVArrayController::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(glyphColumns().size());
}

QVariant RSRTVArrayController::data(const QModelIndex &index, int role) const
{
    // Views ask this in the middle of their work: no rows change here.
    const InfoPtr info = infoOfRow(index.row());
    if (!info || !index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return cellDisplayText(m_document, info, index.column());
    case Qt::EditRole:
        return cellText(m_document, info, index.column());
    case Qt::TextAlignmentRole:
        return isEditableColumn(index.column()) ? QVariant() : QVariant(Qt::AlignCenter);
    case Qt::AccessibleTextRole:
        return columnTitle(index.column()) + u": "_s + cellDisplayText(m_document, info, index.column());
    default:
        return {};
    }
}

bool RSRTVArrayController::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const InfoPtr info = arrangedObjectAtIndex(index.row());
    if (!info || role != Qt::EditRole || !isEditableColumn(index.column()))
        return false;
    const GlyphField field = glyphColumns()[static_cast<std::size_t>(index.column())].field;
    const QString text = value.toString();
    Error error;
    if (setFieldFromText(m_document, {info}, field, text, &error)) {
        if (const std::optional<FieldRemark> remark = remarkOnValue(m_document, {info}, field))
            Q_EMIT remarked(*remark);
        return true;
    }
    Q_EMIT editRefused(error.text());
    Q_EMIT remarked(remarkOnRefusal(m_document, {info}, field, text, error));
    return false;
}

QVariant RSRTVArrayController::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section < columnCount())
        return columnTitle(section);
    return {};
}

Qt::ItemFlags RSRTVArrayController::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return m_draggingEnabled && showsDocumentOrder() ? Qt::ItemIsDropEnabled : Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if (isEditableColumn(index.column())
        && tableViewShouldEditTableColumnRow(m_tableView, index.column(), index.row()))
        flags |= Qt::ItemIsEditable;
    // Also where rows cannot be moved now: the view says why when somebody tries.
    if (m_draggingEnabled || isFiltered())
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

// Rows that are dragged

QString RSRTVArrayController::dragType()
{
    return u"org.runebook.RSRTVArrayController"_s;
}

void RSRTVArrayController::setOTableView(ListTable &table)
{
    m_tableView = table.object();
    m_table = &table;
    awakeFromNib();
}

bool RSRTVArrayController::tableObjectsSupportCopying() const
{
    // Every record can be copied; an empty table has no object to ask.
    return !m_rows.empty();
}

int RSRTVArrayController::rowsAboveRowInIndexSet(qsizetype row, const IndexSet &rows) const
{
    return static_cast<int>(
        std::count_if(rows.begin(), rows.end(), [row](qsizetype dragged) { return dragged < row; }));
}

IndexSet RSRTVArrayController::indexSetFromRows(const QVariantList &rows) const
{
    std::vector<qsizetype> places;
    for (const QVariant &row : rows)
        places.push_back(row.toLongLong());
    return IndexSet(std::move(places));
}

Qt::DropActions RSRTVArrayController::supportedDragActions() const
{
    return Qt::MoveAction | Qt::CopyAction;
}

Qt::DropActions RSRTVArrayController::supportedDropActions() const
{
    return Qt::MoveAction | Qt::CopyAction;
}

QStringList RSRTVArrayController::mimeTypes() const
{
    return {dragType()};
}

namespace {

constexpr quint8 kArchiveVersion = 2;

/// The process and the number of the controller tell its own drags from those of other windows.
QByteArray archivedRows(const IndexSet &rows, quint64 controller)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    stream << kArchiveVersion << qint64(QCoreApplication::applicationPid()) << controller
           << quint64(rows.size());
    for (const qsizetype row : rows)
        stream << qint64(row);
    return bytes;
}

IndexSet rowsOfArchive(const QByteArray &bytes, quint64 controller)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_4);
    quint8 version = 0;
    qint64 process = 0;
    quint64 source = 0;
    quint64 count = 0;
    stream >> version >> process >> source >> count;
    if (version != kArchiveVersion || process != QCoreApplication::applicationPid() || source != controller)
        return {};
    std::vector<qsizetype> rows;
    for (qint64 row = 0; count > 0 && stream.status() == QDataStream::Ok; --count) {
        stream >> row;
        rows.push_back(row);
    }
    return stream.status() == QDataStream::Ok ? IndexSet(std::move(rows)) : IndexSet();
}

} // namespace

quint64 RSRTVArrayController::nextNumber()
{
    static quint64 last = 0;
    return ++last;
}

QMimeData *RSRTVArrayController::mimeData(const QModelIndexList &indexes) const
{
    std::vector<qsizetype> rows;
    for (const QModelIndex &index : indexes)
        rows.push_back(index.row());
    return mimeDataForRows(IndexSet(std::move(rows)));
}

QMimeData *RSRTVArrayController::mimeDataForRows(const IndexSet &rows) const
{
    if (!m_draggingEnabled || !showsDocumentOrder() || rows.empty())
        return nullptr;
    auto *data = new QMimeData;
    data->setData(dragType(), archivedRows(rows, m_number));
    return data;
}

bool RSRTVArrayController::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                           const QModelIndex &parent) const
{
    return m_draggingEnabled && showsDocumentOrder() && !parent.isValid() && row >= 0
        && !rowsOfArchive(data->data(dragType()), m_number).empty();
}

bool RSRTVArrayController::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                        const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    acceptRows(rowsOfArchive(data->data(dragType()), m_number), action, row);
    // The rows were moved here already; the view must not remove the dragged ones on top of that.
    return false;
}

void RSRTVArrayController::acceptRows(const IndexSet &rows, Qt::DropAction action, qsizetype row)
{
    const qsizetype target = qMax<qsizetype>(0, row);
    qsizetype first = target;
    if (action == Qt::CopyAction && tableObjectsSupportCopying()) {
        copyObjectsInArrangedObjectsFromIndexesToIndex(rows, target);
    } else {
        first = target - rowsAboveRowInIndexSet(target, rows);
        moveObjectsInArrangedObjectsFromIndexesToIndex(rows, target);
    }
    setSelectionIndexes(IndexSet::run(first, rows.size()));
}

// Dragging without a mouse

bool RSRTVArrayController::tableViewWriteRowsWithIndexesToPasteboard(QObject *, const IndexSet &rows,
                                                                     QObject *pasteboard) const
{
    auto *drag = qobject_cast<TableDrag *>(pasteboard);
    std::unique_ptr<QMimeData> data(mimeDataForRows(rows));
    if (!drag || !data)
        return false;
    drag->setData(std::move(data));
    return true;
}

int RSRTVArrayController::tableViewValidateDropProposedRowProposedDropOperation(QObject *, QObject *info,
                                                                                int row, int) const
{
    const auto *drag = qobject_cast<TableDrag *>(info);
    if (!drag || !drag->data()
        || !canDropMimeData(drag->data(), Qt::MoveAction, qMax(0, row), 0, QModelIndex()))
        return Qt::IgnoreAction;
    const bool copies = drag->draggingSourceOperationMask() == Qt::CopyAction && tableObjectsSupportCopying();
    return copies ? Qt::CopyAction : Qt::MoveAction;
}

bool RSRTVArrayController::tableViewAcceptDropRowDropOperation(QObject *tableView, QObject *info, int row,
                                                               int operation)
{
    const int action = tableViewValidateDropProposedRowProposedDropOperation(tableView, info, row, operation);
    if (action == Qt::IgnoreAction)
        return false;
    const auto *drag = qobject_cast<TableDrag *>(info);
    acceptRows(rowsOfArchive(drag->data()->data(dragType()), m_number), static_cast<Qt::DropAction>(action),
               row);
    return true;
}

// Questions of the table

namespace {

/// What \a delegate answers to the question of that signature; \a otherwise when it has no such operation.
template <typename Answer, typename... Arguments>
Answer ask(QObject *delegate, const char *signature, Answer otherwise, const Arguments &...arguments)
{
    const QMetaMethod asked = delegateOperation(delegate, signature);
    if (asked.isValid())
        asked.invoke(delegate, Qt::DirectConnection,
                     QReturnArgument<Answer>(QMetaType::fromType<Answer>().name(), otherwise),
                     QArgument<Arguments>(QMetaType::fromType<Arguments>().name(), arguments)...);
    return otherwise;
}

} // namespace

QObject *RSRTVArrayController::tableColumnInTableViewDataCellForRow(int column, QObject *tableView,
                                                                    int row) const
{
    return ask<QObject *>(m_delegate, "tableColumnInTableViewDataCellForRow(int,QObject*,int)", nullptr,
                          column, tableView, row);
}

QObject *RSRTVArrayController::tableViewDataCellForTableColumnRow(QObject *tableView, int column,
                                                                  int row) const
{
    QObject *cell = ask<QObject *>(m_delegate, "tableViewDataCellForTableColumnRow(QObject*,int,int)",
                                   nullptr, tableView, column, row);
    if (cell || !m_tableView)
        return cell;
    return m_table->cellAt(index(row, column));
}

void RSRTVArrayController::tableViewWillDisplayCellForTableColumnRow(QObject *tableView, QObject *cell,
                                                                     int column, int row) const
{
    const QMetaMethod told =
        delegateOperation(m_delegate, "tableViewWillDisplayCellForTableColumnRow(QObject*,QObject*,int,int)");
    if (told.isValid())
        told.invoke(m_delegate, Qt::DirectConnection, Q_ARG(QObject *, tableView), Q_ARG(QObject *, cell),
                    Q_ARG(int, column), Q_ARG(int, row));
}

bool RSRTVArrayController::tableViewShouldEditTableColumnRow(QObject *tableView, int column, int row) const
{
    return ask(m_delegate, "tableViewShouldEditTableColumnRow(QObject*,int,int)", true, tableView, column,
               row);
}

QObject *RSRTVArrayController::viewAtColumnRowMakeIfNecessary(int column, int row, bool isMade) const
{
    return ask<QObject *>(m_delegate, "viewAtColumnRowMakeIfNecessary(int,int,bool)", nullptr, column, row,
                          isMade);
}

bool RSRTVArrayController::tableViewShouldShowCellExpansionForTableColumnRow(QObject *tableView, int column,
                                                                             int row) const
{
    return ask(m_delegate, "tableViewShouldShowCellExpansionForTableColumnRow(QObject*,int,int)", false,
               tableView, column, row);
}

void RSRTVArrayController::tableViewColumnDidResize(QObject *tableView) const
{
    if (auto *table = dynamic_cast<ListTable *>(tableView))
        table->repaintCorner();
}
