#include "editing/records/RSRTVArrayController.h"

#include "editing/fields/EditNames.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/ListTable.h"
#include "editing/records/RowFilter.h"
#include "editing/records/SortOrder.h"
#include "editing/records/TableDrag.h"
#include "platform/CallLater.h"

#include <QItemSelection>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

// Above this many rows of one change they are arranged anew instead.
constexpr std::size_t kMaxSingleRows = 64;
// So many changes of the list in one turn of the event loop show at once, the further ones together.
constexpr int kMostAtOnce = 8;

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
      m_filter(std::make_unique<RowFilter>(document)),
      m_selection(new QItemSelectionModel(this, this))
{
    connect(&document, &VXDocument::infosInserted, this, &RSRTVArrayController::applyInsertion);
    connect(&document, &VXDocument::infosRemoved, this, &RSRTVArrayController::applyRemoval);
    connect(&document, &VXDocument::infoReplaced, this, &RSRTVArrayController::applyReplacement);
    connect(&document, &VXDocument::infosReset, this, &RSRTVArrayController::applyReset);
    connect(&document, &VXDocument::infosChanged, this, &RSRTVArrayController::applyChanges);
    connect(m_selection, &QItemSelectionModel::currentChanged, this, [this](const QModelIndex &current) {
        m_place.reset();
        if (current.isValid())
            m_currentColumn = current.column();
        if (!m_isRestoring)
            m_hiddenCurrent.reset();
    });
    connect(m_selection, &QItemSelectionModel::selectionChanged, this, [this] {
        m_place.reset();
        if (m_isRestoring)
            return;
        m_hiddenSelection.clear();
        Q_EMIT selectionChanged();
    });
    // The document may outlive this.
    const QPointer<RSRTVArrayController> self(this);
    document.undoManager()->setPlaceKeeper({[self] { return self ? self->rememberPlace() : nullptr; },
                                            [self](const std::shared_ptr<const void> &place) {
                                                if (self)
                                                    self->giveBackPlace(place);
                                            }});
    arrange();
}

RSRTVArrayController::~RSRTVArrayController() = default;

// Content

InfoList RSRTVArrayController::arrangedObjects() const
{
    catchUp();
    InfoList infos;
    infos.reserve(m_rows.size());
    for (VXGlyphInfo *info : m_rows)
        infos.push_back(info->shared_from_this());
    return infos;
}

qsizetype RSRTVArrayController::countOfArrangedObjects() const
{
    catchUp();
    return std::ssize(m_rows);
}

InfoPtr RSRTVArrayController::arrangedObjectAtIndex(qsizetype row) const
{
    catchUp();
    return infoOfRow(row);
}

InfoPtr RSRTVArrayController::infoOfRow(qsizetype row) const
{
    const bool isRow = row >= 0 && row < std::ssize(m_rows);
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
    catchUp();
    const qsizetype place = m_document.indexOfObjectInInfos(info);
    if (place < 0 || (showsDocumentOrder() && countOfArrangedObjects() == m_document.countOfInfos()))
        return place;
    if (m_rowOfPlace.size() != static_cast<std::size_t>(m_document.countOfInfos()))
        rebuildRowNumbers();
    return m_rowOfPlace[static_cast<std::size_t>(place)];
}

// Filter and order

const std::optional<Predicate> &RSRTVArrayController::predicate() const
{
    return m_filter->predicate();
}

bool RSRTVArrayController::isFiltered() const
{
    return m_filter->isSet();
}

bool RSRTVArrayController::showsDocumentOrder() const
{
    return m_sortColumn < 0 && !isFiltered();
}

QString RSRTVArrayController::filterPredicate() const
{
    return predicate() ? predicate()->predicateFormat() : QString();
}

bool RSRTVArrayController::setFilterPredicate(const std::optional<Predicate> &predicate, Error *error)
{
    m_filter->setPredicate(predicate);
    m_added.clear();
    return arrange(Filter::Apply, error);
}

void RSRTVArrayController::setFilterPredicate(const Predicate &predicate, IndexSet passing)
{
    m_document.flushChanges();
    m_filter->setPredicate(predicate, std::move(passing));
    m_added.clear();
    arrange();
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
    return m_filter->columns().prepare(predicate, milliseconds);
}

double RSRTVArrayController::preparedShare(const Predicate &predicate) const
{
    return m_filter->columns().preparedShare(predicate);
}

bool RSRTVArrayController::isFilteredAtOnce(const Predicate &predicate)
{
    m_document.flushChanges();
    return m_filter->columns().prepareUpToLong(predicate);
}

KnownBits RSRTVArrayController::answersOf(const Predicate &predicate)
{
    m_document.flushChanges();
    return m_filter->columns().answersOf(predicate);
}

std::optional<qsizetype> RSRTVArrayController::countPassing(const Predicate &predicate, int milliseconds)
{
    return m_filter->countPassing(predicate, milliseconds);
}

void RSRTVArrayController::setCondition(std::function<bool(qsizetype place)> condition)
{
    if (!condition && !m_filter->hasCondition())
        return;
    m_filter->setCondition(std::move(condition));
    arrange();
}

void RSRTVArrayController::rearrangeObjects()
{
    m_sortedPlaces.clear();
    m_added.clear();
    arrange();
}

void RSRTVArrayController::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = column;
    m_sortDirection = order;
    m_sortedPlaces.clear();
    arrange();
}

IndexSet RSRTVArrayController::shownPlaces() const
{
    std::unordered_set<const VXGlyphInfo *> shown = m_added;
    shown.insert(m_rows.begin(), m_rows.end());
    const InfoList &infos = m_document.infos();
    IndexSet places;
    places.reserve(shown.size());
    for (std::size_t place = 0; place < infos.size(); ++place) {
        if (shown.contains(infos[place].get()))
            places.push_back(static_cast<qsizetype>(place));
    }
    return places;
}

std::optional<IndexSet> RSRTVArrayController::withAdded(std::optional<IndexSet> passing) const
{
    if (!passing || m_added.empty())
        return passing;
    std::vector<qsizetype> added;
    for (const VXGlyphInfo *info : m_added)
        added.push_back(m_document.placeOf(info));
    passing->unite(IndexSet(std::move(added)));
    return passing;
}

std::optional<IndexSet> RSRTVArrayController::arrangedPlaces() const
{
    catchUp();
    if (!isFiltered())
        return {};
    std::vector<qsizetype> places;
    places.reserve(m_rows.size());
    for (const VXGlyphInfo *info : m_rows)
        places.push_back(m_document.placeOf(info));
    return IndexSet(std::move(places));
}

std::optional<IndexSet> RSRTVArrayController::placesShownBy(const std::optional<Predicate> &predicate)
{
    catchUp();
    m_document.flushChanges();
    return withAdded(m_filter->placesPassing(predicate));
}

std::optional<IndexSet> RSRTVArrayController::placesShownWith(IndexSet passing) const
{
    return withAdded(m_filter->meetingCondition(std::move(passing)));
}

bool RSRTVArrayController::arrange(Filter filter, Error *error)
{
    m_isBehind = false;
    m_document.flushChanges();
    const InfoList &infos = m_document.infos();
    const bool asksFilter = filter == Filter::Apply || !isFiltered();
    const bool hadPredicate = predicate().has_value();
    const std::optional<IndexSet> passing =
        asksFilter ? withAdded(m_filter->passingPlaces(error)) : shownPlaces();
    const bool gaveUp = hadPredicate && !predicate();
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
    const InfoList currents = currentAndNeighbours();
    Q_EMIT arrangedObjectsAboutToChange();
    m_isRestoring = true;
    beginResetModel();
    m_rows = std::move(rows);
    m_rowOfPlace.clear();
    endResetModel();
    m_isRestoring = false;
    m_leavers.clear();
    restoreSelection(wanted, currents);
    Q_EMIT arrangedObjectsChanged();
}

InfoPtr RSRTVArrayController::currentInfo() const
{
    return infoOfRow(m_selection->currentIndex().row());
}

/// The current record, and if it has left the list, those nearest to it, the next one first.
InfoList RSRTVArrayController::currentAndNeighbours() const
{
    const InfoPtr current = currentInfo();
    if (!current)
        return {};
    InfoList infos {current};
    if (current->listings() > 0)
        return infos;
    const auto stays = [](const VXGlyphInfo *info) { return info->listings() > 0; };
    const auto row = m_rows.begin() + m_selection->currentIndex().row();
    if (const auto next = std::find_if(row, m_rows.end(), stays); next != m_rows.end())
        infos.push_back((*next)->shared_from_this());
    const auto before = std::find_if(std::make_reverse_iterator(row), m_rows.rend(), stays);
    if (before != m_rows.rend())
        infos.push_back((*before)->shared_from_this());
    return infos;
}

InfoPtr RSRTVArrayController::successorOf(const QString &name) const
{
    return m_isListReplaced && !name.isEmpty() ? m_document.infoForName(name) : nullptr;
}

InfoList RSRTVArrayController::wantedSelection() const
{
    InfoList wanted = selectedObjects();
    wanted.insert(wanted.end(), m_hiddenSelection.begin(), m_hiddenSelection.end());
    return wanted;
}

void RSRTVArrayController::restoreSelection(const InfoList &wanted, const InfoList &currents)
{
    std::vector<qsizetype> rows;
    m_hiddenSelection.clear();
    const auto orSuccessor = [this](const InfoPtr &info) {
        const InfoPtr successor = info->listings() == 0 ? successorOf(info->name()) : nullptr;
        return successor ? successor : info;
    };
    for (const InfoPtr &former : wanted) {
        const InfoPtr info = orSuccessor(former);
        const qsizetype row = rowOfObject(info);
        if (row >= 0)
            rows.push_back(row);
        else if (info->listings() > 0)
            m_hiddenSelection.push_back(info);
    }
    m_isRestoring = true;
    restoreCurrent(currents, orSuccessor);
    select(IndexSet(std::move(rows)));
    m_isRestoring = false;
    Q_EMIT selectionChanged();
}

/// The record that a filter took out of sight wins, then the first of \a infos that is shown.
void RSRTVArrayController::restoreCurrent(InfoList infos,
                                          const std::function<InfoPtr(const InfoPtr &)> &orSuccessor)
{
    if (m_hiddenCurrent)
        infos.insert(infos.begin(), m_hiddenCurrent);
    for (const InfoPtr &former : infos) {
        const InfoPtr info = orSuccessor(former);
        const qsizetype row = rowOfObject(info);
        if (row >= 0) {
            m_selection->setCurrentIndex(index(static_cast<int>(row), m_currentColumn),
                                         QItemSelectionModel::NoUpdate);
            m_hiddenCurrent.reset();
            return;
        }
        if (info->listings() > 0 && !m_hiddenCurrent)
            m_hiddenCurrent = info;
    }
}

/// Makes these rows the selected ones. Replacing a selection would compare every old range with every new
/// one, so the old one goes first, unheard, and the new one is told of once.
void RSRTVArrayController::select(const IndexSet &rows)
{
    {
        const QSignalBlocker blocker(m_selection);
        m_selection->clearSelection();
    }
    m_place.reset();
    if (m_tableView)
        m_table->repaintCells();
    m_selection->select(selectionOf(*this, rows), QItemSelectionModel::Select);
}

// Places, which come back with undo and redo

struct RSRTVArrayController::Place {
    InfoList selected;
    InfoPtr current;
};

std::shared_ptr<const void> RSRTVArrayController::rememberPlace()
{
    // Many steps in a row begin at one place; it is kept once.
    if (!m_place)
        m_place = std::make_shared<const Place>(Place {wantedSelection(), currentInfo()});
    return m_place;
}

void RSRTVArrayController::giveBackPlace(const std::shared_ptr<const void> &place)
{
    if (isFiltered())
        arrange();
    catchUp();
    if (!std::exchange(m_hasListChanged, false) || !place)
        return;
    const auto &[selected, current] = *static_cast<const Place *>(place.get());
    m_hiddenCurrent.reset();
    restoreSelection(selected, current ? InfoList {current} : InfoList());
    Q_EMIT placeGivenBack();
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
    catchUp();
    std::vector<qsizetype> rows;
    for (const QItemSelectionRange &range : m_selection->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.push_back(row);
    }
    return IndexSet(std::move(rows));
}

qsizetype RSRTVArrayController::selectedCount() const
{
    catchUp();
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
    if (!present.empty())
        m_selection->setCurrentIndex(index(static_cast<int>(present.front()), m_currentColumn),
                                     QItemSelectionModel::NoUpdate);
    selectRows(present);
    return present.size() == rows.size();
}

void RSRTVArrayController::selectRows(const IndexSet &rows)
{
    if (selectionIndexes() == rows)
        return;
    m_isRestoring = true;
    select(rows);
    m_isRestoring = false;
    m_hiddenSelection.clear();
    Q_EMIT selectionChanged();
}

void RSRTVArrayController::setSelectedObjectsKeepingCurrent(const InfoList &infos)
{
    const InfoPtr current = currentInfo();
    if (std::find(infos.begin(), infos.end(), current) == infos.end()) {
        setSelectedObjects(infos);
        return;
    }
    selectRows(rowsOfObjects(infos));
}

IndexSet RSRTVArrayController::rowsOfObjects(const InfoList &infos) const
{
    std::vector<qsizetype> rows;
    for (const InfoPtr &info : infos) {
        if (const qsizetype row = rowOfObject(info); row >= 0)
            rows.push_back(row);
    }
    return IndexSet(std::move(rows));
}

bool RSRTVArrayController::setSelectedObjects(const InfoList &infos)
{
    const IndexSet rows = rowsOfObjects(infos);
    return setSelectionIndexes(rows) && rows.size() == infos.size();
}

// What the document tells

bool RSRTVArrayController::isInHistory() const
{
    const UndoManager *manager = m_document.undoManager();
    return manager->isUndoing() || manager->isRedoing();
}

/// Whether a change of the list, of which the columns were not told yet, shows at once.
bool RSRTVArrayController::canApplyNow()
{
    m_sortedPlaces.clear();
    m_filter->forgetPassing();
    m_rowOfPlace.clear();
    m_hasListChanged |= isInHistory();
    if (m_listChanges++ == 0) {
        callLater(this, [this] {
            m_listChanges = 0;
            catchUp();
        });
    }
    if (m_listChanges > kMostAtOnce)
        m_filter->columns().reset(); // made anew sooner than kept in step with thousands of changes
    const bool waitsForStep = isInHistory() && (isFiltered() || m_sortColumn >= 0);
    return !m_isBehind && !waitsForStep && m_listChanges <= kMostAtOnce;
}

void RSRTVArrayController::fallBehind()
{
    constexpr qint64 kLongestMs = 200; // so that a window that is painted meanwhile shows something new
    m_filtersNext |= isInHistory();
    if (!std::exchange(m_isBehind, true))
        m_sinceCaughtUp.start();
    else if (m_sinceCaughtUp.elapsed() > kLongestMs)
        catchUp();
}

void RSRTVArrayController::catchUp() const
{
    if (!m_isBehind)
        return;
    // What is shown follows from what there is; when it is worked out is nobody's business.
    auto &self = const_cast<RSRTVArrayController &>(*this);
    self.arrange(std::exchange(self.m_filtersNext, false) ? Filter::Apply : Filter::LeaveRows);
}

void RSRTVArrayController::applyInsertion(const IndexSet &places)
{
    m_filter->columns().noteInsertion(places);
    const bool isNow = canApplyNow();
    if (isFiltered() && !isInHistory()) {
        for (const qsizetype place : places)
            m_added.insert(m_document.objectInInfosAtIndex(place).get());
    }
    if (!isNow)
        fallBehind();
    else if (m_sortColumn >= 0 || isFiltered() || places.size() > kMaxSingleRows)
        arrange(Filter::LeaveRows);
    else
        insertRowsAt(places);
}

/// In the order of the document, where rows are places.
void RSRTVArrayController::insertRowsAt(const IndexSet &places)
{
    Q_EMIT arrangedObjectsAboutToChange();
    for (const qsizetype place : places) {
        const int row = static_cast<int>(place);
        beginInsertRows({}, row, row);
        m_rows.insert(m_rows.begin() + place, m_document.objectInInfosAtIndex(place).get());
        endInsertRows();
    }
    m_rowOfPlace.clear();
    Q_EMIT arrangedObjectsChanged();
}

/// The rows of the records that are leaving the list from \a places.
IndexSet RSRTVArrayController::rowsOfLeaving(const IndexSet &places) const
{
    const bool areRowsPlaces =
        showsDocumentOrder() && std::ssize(m_rows) == m_document.countOfInfos() + std::ssize(places);
    if (areRowsPlaces)
        return places;
    IndexSet rows;
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row]->listings() == 0)
            rows.push_back(static_cast<qsizetype>(row));
    }
    return rows;
}

void RSRTVArrayController::applyRemoval(const IndexSet &places)
{
    m_filter->columns().noteRemoval(places);
    const bool isNow = canApplyNow();
    const InfoList &leaving = m_document.leavingInfos();
    bool standElsewhere = false;
    for (const InfoPtr &info : leaving) {
        standElsewhere |= info->listings() > 0;
        if (info->listings() == 0)
            m_added.erase(info.get());
    }
    std::erase_if(m_hiddenSelection, [](const InfoPtr &info) { return info->listings() == 0; });
    if (m_hiddenCurrent && m_hiddenCurrent->listings() == 0)
        m_hiddenCurrent.reset();
    if (!isNow) {
        m_leavers.insert(m_leavers.end(), leaving.begin(), leaving.end());
        fallBehind();
    } else if (standElsewhere) {
        arrange(Filter::LeaveRows);
    } else {
        removeRows(rowsOfLeaving(places));
    }
}

void RSRTVArrayController::removeRows(const IndexSet &gone)
{
    if (gone.empty())
        return;
    if (gone.size() > kMaxSingleRows) {
        std::vector<VXGlyphInfo *> rows;
        rows.reserve(m_rows.size() - gone.size());
        std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(rows),
                     [](const VXGlyphInfo *info) { return info->listings() > 0; });
        replaceRows(std::move(rows));
        return;
    }
    const InfoList currents = currentAndNeighbours();
    Q_EMIT arrangedObjectsAboutToChange();
    m_isRestoring = true;
    for (auto row = gone.rbegin(); row != gone.rend(); ++row) {
        beginRemoveRows({}, static_cast<int>(*row), static_cast<int>(*row));
        m_rows.erase(m_rows.begin() + *row);
        endRemoveRows();
    }
    m_rowOfPlace.clear();
    restoreCurrent(currents, [](const InfoPtr &info) { return info; });
    m_isRestoring = false;
    Q_EMIT arrangedObjectsChanged();
    Q_EMIT selectionChanged();
}

void RSRTVArrayController::applyReplacement(qsizetype place, const InfoPtr &former)
{
    m_filter->columns().noteReplacement(place);
    const bool isNow = canApplyNow();
    VXGlyphInfo *info = m_document.objectInInfosAtIndex(place).get();
    m_added.erase(former.get());
    if (isFiltered() && !isInHistory())
        m_added.insert(info);
    const bool areRowsPlaces = showsDocumentOrder() && std::ssize(m_rows) == m_document.countOfInfos();
    if (isNow && areRowsPlaces) {
        const int row = static_cast<int>(place);
        m_rows[static_cast<std::size_t>(place)] = info;
        m_place.reset();
        Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
        Q_EMIT selectionChanged();
        return;
    }
    m_leavers.push_back(former);
    if (isNow)
        arrange(Filter::LeaveRows);
    else
        fallBehind();
}

void RSRTVArrayController::applyReset()
{
    m_filter->columns().reset();
    m_sortedPlaces.clear();
    m_filter->forgetPassing();
    m_hasListChanged |= isInHistory();
    std::erase_if(m_added, [](const VXGlyphInfo *info) { return info->listings() == 0; });
    m_isListReplaced = true;
    arrange();
    m_isListReplaced = false;
}

void RSRTVArrayController::applyChanges(const std::vector<VXDocument::Change> &changes)
{
    const int lastColumn = columnCount() - 1;
    m_filter->forgetPassing();
    for (const VXDocument::Change &change : changes) {
        m_filter->columns().noteChange(change);
        if (m_sortColumn >= 0)
            m_sortedPlaces.clear();
    }
    if (m_rows.empty() || m_isBehind)
        return;
    // Beyond a screenful it is cheaper to have the visible rows painted than to find the changed ones.
    if (changes.size() > kMaxSingleRows) {
        Q_EMIT dataChanged(index(0, 0), index(static_cast<int>(m_rows.size()) - 1, lastColumn));
        return;
    }
    for (const VXDocument::Change &change : changes) {
        if (const int row = static_cast<int>(rowOfObject(change.info)); row >= 0)
            Q_EMIT dataChanged(index(row, 0), index(row, lastColumn));
    }
}

// Edits

qsizetype RSRTVArrayController::placeForRow(qsizetype row) const
{
    if (row <= 0 && countOfArrangedObjects() > 0)
        return m_document.indexOfObjectInInfos(arrangedObjectAtIndex(0));
    const InfoPtr before = arrangedObjectAtIndex(row - 1);
    return before ? m_document.indexOfObjectInInfos(before) + 1 : m_document.countOfInfos();
}

void RSRTVArrayController::insertObjectAtArrangedObjectIndex(const InfoPtr &info, qsizetype row)
{
    m_document.insertObjectInInfosAtIndex(info, placeForRow(row));
}

void RSRTVArrayController::add()
{
    const InfoPtr info = VXGlyphInfo::init();
    m_document.insertObjectInInfosAtIndex(info, m_document.countOfInfos());
    setSelectedObjects({info});
}

void RSRTVArrayController::remove()
{
    const IndexSet rows = selectionIndexes();
    if (rows.empty())
        return;
    removeObjectsAtArrangedObjectIndexes(rows);
    const qsizetype next = rows.back() + 1 - std::ssize(rows);
    if (const qsizetype last = countOfArrangedObjects() - 1; last >= 0)
        setSelectionIndexes({qMin(next, last)});
}

void RSRTVArrayController::removeObjectsAtArrangedObjectIndexes(const IndexSet &rows)
{
    std::vector<qsizetype> places;
    places.reserve(rows.size());
    for (const qsizetype row : rows) {
        if (const InfoPtr info = arrangedObjectAtIndex(row))
            places.push_back(m_document.indexOfObjectInInfos(info));
    }
    m_document.removeObjectsFromInfosAtIndexes(IndexSet(std::move(places)));
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
    const UndoGroup group(m_document.undoManager(), editNameOf(tr("Move %1"), moved));
    removeObjectsAtArrangedObjectIndexes(rows);
    m_document.insertObjectsInInfosAtIndexes(moved, IndexSet::run(target, moved.size()));
}

void RSRTVArrayController::copyObjectsInArrangedObjectsFromIndexesToIndex(const IndexSet &rows, qsizetype row)
{
    // The copies come to stand in the order of their sources, all at once: one after the other, each would
    // move all that follow.
    InfoList sources;
    InfoList copies;
    const qsizetype first = placeForRow(row);
    for (const qsizetype from : rows) {
        const InfoPtr source = arrangedObjectAtIndex(from);
        if (!source)
            continue;
        sources.push_back(source);
        copies.push_back(source->copy());
    }
    const UndoGroup group(m_document.undoManager(), editNameOf(tr("Duplicate %1"), sources));
    m_document.insertObjectsInInfosAtIndexes(copies, IndexSet::run(first, copies.size()));
    for (std::size_t i = copies.size(); i-- > 0;)
        m_questions.tellOfCopy(this, sources[i], copies[i]);
}

// The item model

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
    return m_drag.dataOf(rows).release();
}

bool RSRTVArrayController::canDropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                           const QModelIndex &parent) const
{
    return m_draggingEnabled && showsDocumentOrder() && !parent.isValid() && row >= 0
        && !m_drag.rowsOf(*data).empty();
}

bool RSRTVArrayController::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                        const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    acceptRows(m_drag.rowsOf(*data), action, row);
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
    acceptRows(m_drag.rowsOf(*drag->data()), static_cast<Qt::DropAction>(action), row);
    return true;
}

// Questions of the table

QObject *RSRTVArrayController::tableColumnInTableViewDataCellForRow(int column, QObject *tableView,
                                                                    int row) const
{
    return m_questions.columnDataCell(column, tableView, row);
}

QObject *RSRTVArrayController::tableViewDataCellForTableColumnRow(QObject *tableView, int column,
                                                                  int row) const
{
    QObject *cell = m_questions.dataCell(tableView, column, row);
    if (cell || !m_tableView)
        return cell;
    return m_table->cellAt(index(row, column));
}

void RSRTVArrayController::tableViewWillDisplayCellForTableColumnRow(QObject *tableView, QObject *cell,
                                                                     int column, int row) const
{
    m_questions.willDisplayCell(tableView, cell, column, row);
}

bool RSRTVArrayController::tableViewShouldEditTableColumnRow(QObject *tableView, int column, int row) const
{
    return m_questions.shouldEdit(tableView, column, row);
}

QObject *RSRTVArrayController::viewAtColumnRowMakeIfNecessary(int column, int row, bool isMade) const
{
    return m_questions.viewAt(column, row, isMade);
}

bool RSRTVArrayController::tableViewShouldShowCellExpansionForTableColumnRow(QObject *tableView, int column,
                                                                             int row) const
{
    return m_questions.shouldShowExpansion(tableView, column, row);
}

void RSRTVArrayController::tableViewColumnDidResize(QObject *tableView) const
{
    if (auto *table = dynamic_cast<ListTable *>(tableView))
        table->repaintCorner();
}
