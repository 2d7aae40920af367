#include "editing/RSRTVArrayController.h"

#include "editing/DelegateOperation.h"
#include "editing/FieldEditing.h"
#include "editing/GlyphColumns.h"
#include "editing/SearchColumns.h"
#include "editing/SortOrder.h"

#include <QItemSelection>
#include <QTableView>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

// Above this many separate insertions the rows are arranged anew instead.
constexpr std::size_t kMaxSingleInsertions = 64;

QItemSelection selectionOf(const QAbstractItemModel &model, const IndexSet &rows)
{
    QItemSelection selection;
    const int lastColumn = model.columnCount() - 1;
    for (std::size_t i = 0; i < rows.size();) {
        std::size_t end = i + 1;
        while (end < rows.size() && rows[end] == rows[end - 1] + 1)
            ++end;
        selection.append(QItemSelectionRange(model.index(static_cast<int>(rows[i]), 0),
                                             model.index(static_cast<int>(rows[end - 1]), lastColumn)));
        i = end;
    }
    return selection;
}

} // namespace

RSRTVArrayController::RSRTVArrayController(VXDocument &document, QObject *parent)
    : QAbstractTableModel(parent),
      m_document(document),
      m_columns(std::make_unique<SearchColumns>(document)),
      m_selection(new QItemSelectionModel(this, this))
{
    connect(&document, &VXDocument::infosInserted, this, &RSRTVArrayController::applyInsertion);
    connect(&document, &VXDocument::infosRemoved, this, &RSRTVArrayController::applyRemoval);
    connect(&document, &VXDocument::infosReset, this, [this] {
        m_columns->reset();
        arrange();
    });
    connect(&document, &VXDocument::infosChanged, this, &RSRTVArrayController::applyChanges);
    connect(m_selection, &QItemSelectionModel::selectionChanged, this, [this] {
        if (m_isRestoring)
            return;
        m_hiddenSelection.clear();
        Q_EMIT selectionChanged();
    });
    arrange();
}

RSRTVArrayController::~RSRTVArrayController() = default;

// Content

InfoList RSRTVArrayController::arrangedObjects() const
{
    InfoList infos;
    infos.reserve(m_rows.size());
    for (VXGlyphInfo *info : m_rows)
        infos.push_back(info->shared_from_this());
    return infos;
}

InfoPtr RSRTVArrayController::arrangedObjectAtIndex(qsizetype row) const
{
    const bool isRow = row >= 0 && row < countOfArrangedObjects();
    return isRow ? m_rows[static_cast<std::size_t>(row)]->shared_from_this() : nullptr;
}

void RSRTVArrayController::rebuildRowNumbers() const
{
    m_rowOfPlace.assign(static_cast<std::size_t>(m_document.countOfInfos()), -1);
    for (std::size_t row = m_rows.size(); row-- > 0;) {
        const qsizetype place = m_document.placeOf(m_rows[row]);
        if (place >= 0)
            m_rowOfPlace[static_cast<std::size_t>(place)] = static_cast<qint32>(row);
    }
}

qsizetype RSRTVArrayController::rowOfObject(const InfoPtr &info) const
{
    const qsizetype place = m_document.indexOfObjectInInfos(info);
    if (place < 0 || (showsDocumentOrder() && countOfArrangedObjects() == m_document.countOfInfos()))
        return place;
    if (m_rowOfPlace.size() != static_cast<std::size_t>(m_document.countOfInfos()))
        rebuildRowNumbers();
    return m_rowOfPlace[static_cast<std::size_t>(place)];
}

// Filter and order

QString RSRTVArrayController::filterPredicate() const
{
    return m_predicate ? m_predicate->predicateFormat() : QString();
}

bool RSRTVArrayController::setFilterPredicate(const std::optional<Predicate> &predicate, Error *error)
{
    m_predicate = predicate;
    return arrange(error);
}

bool RSRTVArrayController::setFilterPredicate(const QString &text, Error *error)
{
    if (text.isEmpty())
        return setFilterPredicate(std::optional<Predicate>());
    const std::optional<Predicate> predicate = Predicate::parse(text, error);
    return predicate && setFilterPredicate(predicate, error);
}

bool RSRTVArrayController::prepareFilter(const Predicate &predicate, int milliseconds)
{
    m_document.flushChanges();
    return m_columns->prepare(predicate, milliseconds);
}

void RSRTVArrayController::setCondition(std::function<bool(qsizetype place)> condition)
{
    if (!condition && !m_condition)
        return;
    m_condition = std::move(condition);
    arrange();
}

void RSRTVArrayController::rearrangeObjects()
{
    m_sortedPlaces.clear();
    arrange();
}

void RSRTVArrayController::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = column;
    m_sortDirection = order;
    rearrangeObjects();
}

std::optional<IndexSet> RSRTVArrayController::passingPlaces(Error *error)
{
    std::optional<IndexSet> passing;
    if (m_predicate) {
        passing = m_columns->placesPassing(*m_predicate, error);
        if (!passing)
            m_predicate.reset();
    }
    if (!m_condition)
        return passing;
    if (passing) {
        std::erase_if(*passing, [this](qsizetype place) { return !m_condition(place); });
        return passing;
    }
    passing.emplace();
    for (qsizetype place = 0; place < m_document.countOfInfos(); ++place) {
        if (m_condition(place))
            passing->push_back(place);
    }
    return passing;
}

bool RSRTVArrayController::arrange(Error *error)
{
    m_document.flushChanges();
    const InfoList &infos = m_document.infos();
    const std::optional<IndexSet> passing = passingPlaces(error);
    const bool gaveUp = error && !error->domain.isEmpty();
    std::vector<VXGlyphInfo *> rows;
    rows.reserve(passing ? passing->size() : infos.size());
    if (m_sortColumn < 0) {
        if (passing) {
            for (const qsizetype place : *passing)
                rows.push_back(infos[static_cast<std::size_t>(place)].get());
        } else {
            for (const InfoPtr &info : infos)
                rows.push_back(info.get());
        }
    } else {
        for (const quint32 place : placesInOrder(passing))
            rows.push_back(infos[place].get());
    }
    replaceRows(std::move(rows));
    return !gaveUp;
}

std::vector<quint32> RSRTVArrayController::placesInOrder(const std::optional<IndexSet> &passing)
{
    const InfoList &infos = m_document.infos();
    if (m_sortedPlaces.size() != infos.size())
        m_sortedPlaces = sortedPlaces(infos, glyphColumns()[static_cast<std::size_t>(m_sortColumn)].field,
                                      m_sortDirection);
    if (!passing)
        return m_sortedPlaces;
    std::vector<bool> passes(infos.size());
    for (const qsizetype place : *passing)
        passes[static_cast<std::size_t>(place)] = true;
    std::vector<quint32> places;
    places.reserve(passing->size());
    std::copy_if(m_sortedPlaces.begin(), m_sortedPlaces.end(), std::back_inserter(places),
                 [&passes](quint32 place) { return passes[place]; });
    return places;
}

void RSRTVArrayController::replaceRows(std::vector<VXGlyphInfo *> rows)
{
    const InfoList wanted = wantedSelection();
    const InfoPtr current = arrangedObjectAtIndex(m_selection->currentIndex().row());
    Q_EMIT arrangedObjectsAboutToChange();
    m_isRestoring = true;
    beginResetModel();
    m_rows = std::move(rows);
    m_rowOfPlace.clear();
    endResetModel();
    m_isRestoring = false;
    restoreSelection(wanted, current);
    Q_EMIT arrangedObjectsChanged();
}

InfoList RSRTVArrayController::wantedSelection() const
{
    InfoList wanted = selectedObjects();
    wanted.insert(wanted.end(), m_hiddenSelection.begin(), m_hiddenSelection.end());
    return wanted;
}

void RSRTVArrayController::restoreSelection(const InfoList &wanted, const InfoPtr &current)
{
    IndexSet rows;
    m_hiddenSelection.clear();
    for (const InfoPtr &info : wanted) {
        const qsizetype row = rowOfObject(info);
        if (row >= 0)
            rows.push_back(row);
        else if (info->listings() > 0)
            m_hiddenSelection.push_back(info);
    }
    std::sort(rows.begin(), rows.end());
    m_isRestoring = true;
    if (const qsizetype row = current ? rowOfObject(current) : -1; row >= 0)
        m_selection->setCurrentIndex(index(static_cast<int>(row), 0), QItemSelectionModel::NoUpdate);
    m_selection->select(selectionOf(*this, rows), QItemSelectionModel::ClearAndSelect);
    m_isRestoring = false;
    Q_EMIT selectionChanged();
}

void RSRTVArrayController::writeArrangedOrder()
{
    if (isFiltered() || m_sortColumn < 0)
        return;
    const InfoList order = arrangedObjects();
    m_sortColumn = -1;
    m_sortedPlaces.clear();
    const UndoGroup group(m_document.undoManager(), tr("Write Shown Order"));
    m_document.reorderInfos(order);
}

// Selection

IndexSet RSRTVArrayController::selectionIndexes() const
{
    IndexSet rows;
    for (const QItemSelectionRange &range : m_selection->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

qsizetype RSRTVArrayController::selectedCount() const
{
    qsizetype count = 0;
    for (const QItemSelectionRange &range : m_selection->selection())
        count += range.height();
    return count;
}

InfoList RSRTVArrayController::selectedObjects() const
{
    const IndexSet rows = selectionIndexes();
    InfoList infos;
    infos.reserve(rows.size());
    for (const qsizetype row : rows)
        infos.push_back(m_rows[static_cast<std::size_t>(row)]->shared_from_this());
    return infos;
}

bool RSRTVArrayController::setSelectionIndexes(const IndexSet &rows)
{
    IndexSet present;
    for (const qsizetype row : rows) {
        if (row >= 0 && row < countOfArrangedObjects())
            present.push_back(row);
    }
    std::sort(present.begin(), present.end());
    if (!present.empty())
        m_selection->setCurrentIndex(index(static_cast<int>(present.front()), 0),
                                     QItemSelectionModel::NoUpdate);
    m_selection->select(selectionOf(*this, present), QItemSelectionModel::ClearAndSelect);
    return present.size() == rows.size();
}

bool RSRTVArrayController::setSelectedObjects(const InfoList &infos)
{
    IndexSet rows;
    for (const InfoPtr &info : infos) {
        if (const qsizetype row = rowOfObject(info); row >= 0)
            rows.push_back(row);
    }
    return setSelectionIndexes(rows) && rows.size() == infos.size();
}

// What the document tells

void RSRTVArrayController::applyInsertion(const IndexSet &places)
{
    m_columns->noteInsertion(places);
    m_sortedPlaces.clear();
    m_rowOfPlace.clear();
    const InfoList &infos = m_document.infos();
    if (m_sortColumn >= 0 || isFiltered() || places.size() > kMaxSingleInsertions) {
        // New records are shown although a filter might hide them, until the filter is used again: whoever
        // adds a record wants to see it. They stand behind the rows that were there.
        if (!isFiltered()) {
            arrange();
            return;
        }
        std::vector<VXGlyphInfo *> rows = m_rows;
        for (const qsizetype place : places)
            rows.push_back(infos[static_cast<std::size_t>(place)].get());
        replaceRows(std::move(rows));
        return;
    }
    for (const qsizetype place : places) {
        const int row = static_cast<int>(place);
        beginInsertRows({}, row, row);
        m_rows.insert(m_rows.begin() + place, infos[static_cast<std::size_t>(place)].get());
        endInsertRows();
    }
    Q_EMIT arrangedObjectsChanged();
}

void RSRTVArrayController::applyRemoval(const IndexSet &places)
{
    m_columns->noteRemoval(places);
    m_sortedPlaces.clear();
    m_rowOfPlace.clear();
    IndexSet gone;
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row]->listings() == 0)
            gone.push_back(static_cast<qsizetype>(row));
    }
    std::erase_if(m_hiddenSelection, [](const InfoPtr &info) { return info->listings() == 0; });
    if (gone.empty())
        return;
    if (gone.size() > kMaxSingleInsertions) {
        // What is left of the selection is kept; the row after the removed ones becomes the current one.
        const qsizetype current = m_selection->currentIndex().row();
        const auto removedBefore = std::lower_bound(gone.begin(), gone.end(), current) - gone.begin();
        std::vector<VXGlyphInfo *> rows;
        rows.reserve(m_rows.size() - gone.size());
        std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(rows),
                     [](const VXGlyphInfo *info) { return info->listings() > 0; });
        replaceRows(std::move(rows));
        const int next =
            static_cast<int>(qMin<qsizetype>(current - removedBefore, countOfArrangedObjects() - 1));
        if (!m_selection->currentIndex().isValid() && next >= 0)
            m_selection->setCurrentIndex(index(next, 0), QItemSelectionModel::NoUpdate);
        return;
    }
    for (auto row = gone.rbegin(); row != gone.rend(); ++row) {
        beginRemoveRows({}, static_cast<int>(*row), static_cast<int>(*row));
        m_rows.erase(m_rows.begin() + *row);
        endRemoveRows();
    }
    Q_EMIT arrangedObjectsChanged();
    Q_EMIT selectionChanged();
}

void RSRTVArrayController::applyChanges(const std::vector<VXDocument::Change> &changes)
{
    const int lastColumn = columnCount() - 1;
    for (const VXDocument::Change &change : changes) {
        m_columns->noteChange(change);
        if (m_sortColumn >= 0)
            m_sortedPlaces.clear();
    }
    if (m_rows.empty())
        return;
    // Beyond a screenful it is cheaper to have the visible rows painted than to find the changed ones.
    if (changes.size() > kMaxSingleInsertions) {
        Q_EMIT dataChanged(index(0, 0), index(static_cast<int>(m_rows.size()) - 1, lastColumn));
        return;
    }
    for (const VXDocument::Change &change : changes) {
        if (const int row = static_cast<int>(rowOfObject(change.info)); row >= 0)
            Q_EMIT dataChanged(index(row, 0), index(row, lastColumn));
    }
}

// Edits

void RSRTVArrayController::insertObjectAtArrangedObjectIndex(const InfoPtr &info, qsizetype row)
{
    qsizetype place = m_document.countOfInfos();
    if (row <= 0 && !m_rows.empty())
        place = m_document.indexOfObjectInInfos(arrangedObjectAtIndex(0));
    else if (const InfoPtr before = arrangedObjectAtIndex(row - 1))
        place = m_document.indexOfObjectInInfos(before) + 1;
    m_document.insertObjectInInfosAtIndex(info, place);
}

void RSRTVArrayController::add()
{
    const InfoPtr info = VXGlyphInfo::init();
    m_document.insertObjectInInfosAtIndex(info, m_document.countOfInfos());
    setSelectedObjects({info});
}

void RSRTVArrayController::remove()
{
    removeObjectsAtArrangedObjectIndexes(selectionIndexes());
}

void RSRTVArrayController::removeObjectsAtArrangedObjectIndexes(const IndexSet &rows)
{
    IndexSet places;
    places.reserve(rows.size());
    for (const qsizetype row : rows) {
        if (const InfoPtr info = arrangedObjectAtIndex(row))
            places.push_back(m_document.indexOfObjectInInfos(info));
    }
    std::sort(places.begin(), places.end());
    m_document.removeObjectsFromInfosAtIndexes(places);
}

void RSRTVArrayController::moveObjectsInArrangedObjectsFromIndexesToIndex(const IndexSet &rows, qsizetype row)
{
    InfoList moved;
    for (const qsizetype from : rows) {
        if (const InfoPtr info = arrangedObjectAtIndex(from))
            moved.push_back(info);
    }
    if (moved.empty() || moved.size() != rows.size())
        return;
    const qsizetype target = row - rowsAboveRowInIndexSet(row, rows);
    IndexSet places(moved.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        places[i] = target + static_cast<qsizetype>(i);
    const UndoGroup group(m_document.undoManager(), tr("Move"));
    removeObjectsAtArrangedObjectIndexes(rows);
    m_document.insertObjectsInInfosAtIndexes(moved, places);
}

void RSRTVArrayController::copyObjectsInArrangedObjectsFromIndexesToIndex(const IndexSet &rows, qsizetype row)
{
    const UndoGroup group(m_document.undoManager(), tr("Duplicate"));
    qsizetype copied = 0;
    for (auto from = rows.rbegin(); from != rows.rend(); ++from) {
        const InfoPtr source = arrangedObjectAtIndex(*from >= row ? *from + copied++ : *from);
        if (!source)
            continue;
        const InfoPtr copy = source->copy();
        insertObjectAtArrangedObjectIndex(copy, row);
        const QMetaMethod told =
            delegateOperation(m_delegate, "arrayControllerDidCopyObjectCopy(QObject*,InfoPtr,InfoPtr)");
        if (told.isValid())
            told.invoke(m_delegate, Qt::DirectConnection, Q_ARG(QObject *, this), Q_ARG(InfoPtr, source),
                        Q_ARG(InfoPtr, copy));
    }
}
