#pragma once

#include "document/VXDocument.h"
#include "editing/fields/FieldRemarks.h"
#include "editing/records/RowDrag.h"
#include "editing/records/TableQuestions.h"
#include "editing/search/RecordTests.h"
#include "platform/predicates/Predicate.h"

#include <QAbstractTableModel>
#include <QElapsedTimer>
#include <QItemSelectionModel>
#include <QPointer>
#include <functional>
#include <memory>
#include <unordered_set>

namespace runebook {
class ListTable;
class RowFilter;
} // namespace runebook

/// The list controller of a document window: the info list arranged (filtered, sorted) as the rows of a
/// table, the selection in it, and the edits made through it. It translates between rows and records and
/// sends every change to the document. Rows are arranged places; records are what outlives a call.
class RSRTVArrayController : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit RSRTVArrayController(VXDocument &document, QObject *parent = nullptr);
    ~RSRTVArrayController() override;

public: // content
    VXDocument &document() const { return m_document; }
    /// All records of the document, in list order.
    Q_INVOKABLE InfoList content() const { return m_document.infos(); }
    /// The records shown, in rows.
    Q_INVOKABLE InfoList arrangedObjects() const;
    qsizetype countOfArrangedObjects() const;
    InfoPtr arrangedObjectAtIndex(qsizetype row) const;
    /// The row of a record, or -1 when it is not shown.
    Q_INVOKABLE qsizetype rowOfObject(const InfoPtr &info) const;

public: // filter
    /// Null: everything is shown.
    const std::optional<runebook::Predicate> &predicate() const;
    /// The text of the filter; null when there is none.
    Q_INVOKABLE QString filterPredicate() const;
    /// False and an error when the filter gave up (a regular expression without end); then all is shown.
    bool setFilterPredicate(const std::optional<runebook::Predicate> &predicate,
                            runebook::Error *error = nullptr);
    /// The same when somebody has found out what passes: \a passing of the list as it is now.
    void setFilterPredicate(const runebook::Predicate &predicate, runebook::IndexSet passing);
    /// Parses \a text; an absent or empty one clears the filter.
    Q_INVOKABLE bool setFilterPredicate(const QString &text, runebook::Error *error = nullptr);
    /// Makes ready what a filter like \a predicate needs, for at most about \a milliseconds; false when it
    /// is to be called again in idle time.
    bool prepareFilter(const runebook::Predicate &predicate, int milliseconds);
    /// How far that has come, from 0 to 1.
    double preparedShare(const runebook::Predicate &predicate) const;
    /// Whether a filter like \a predicate is answered at once, as no very long value is in its way; otherwise
    /// prepareFilter() is to be called first, until it is ready.
    bool isFilteredAtOnce(const runebook::Predicate &predicate);
    /// What is known about the tests of \a predicate once it is ready; see SearchColumns::answersOf().
    runebook::KnownBits answersOf(const runebook::Predicate &predicate);
    /// How many records of the document pass \a predicate. Nothing while that is not ready after about
    /// \a milliseconds: to be asked again in idle time.
    std::optional<qsizetype> countPassing(const runebook::Predicate &predicate, int milliseconds);
    /// Shows only records at places of the list that \a condition accepts, besides the filter; null: no
    /// condition. It is asked whenever the rows are arranged.
    void setCondition(std::function<bool(qsizetype place)> condition);
    /// The places in the list of the records that are shown; nothing: all are.
    std::optional<runebook::IndexSet> arrangedPlaces() const;
    /// The same under another filter (null: none), which is to be ready: see prepareFilter().
    std::optional<runebook::IndexSet> placesShownBy(const std::optional<runebook::Predicate> &predicate);
    /// The same for a filter that \a passing of the list pass.
    std::optional<runebook::IndexSet> placesShownWith(runebook::IndexSet passing) const;
    /// Whether a filter or a condition may hide records.
    bool isFiltered() const;
    Q_INVOKABLE void rearrangeObjects();

public: // sorting: of the rows only, the document keeps its order
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    /// The column the rows are sorted by; -1: document order.
    int sortColumn() const { return m_sortColumn; }
    Qt::SortOrder sortDirection() const { return m_sortDirection; }
    /// Makes the shown order the document's, as one undo step. Only while nothing is filtered.
    Q_INVOKABLE void writeArrangedOrder();

public: // selection
    Q_INVOKABLE InfoList selectedObjects() const;
    Q_INVOKABLE runebook::IndexSet selectionIndexes() const;
    Q_INVOKABLE bool setSelectionIndexes(const runebook::IndexSet &rows);
    Q_INVOKABLE bool setSelectedObjects(const InfoList &infos);
    qsizetype selectedCount() const;
    QItemSelectionModel *selectionModel() const { return m_selection; }
    /// The same as setSelectedObjects, but the current record stays the current one if it is among them.
    void setSelectedObjectsKeepingCurrent(const InfoList &infos);
    /// While a whole list takes the place of another one: the record of the new list that stands for one of
    /// the former; else null.
    InfoPtr successorOf(const QString &name) const;

public: // edits
    /// Inserts at a row: in the document behind the record of the row before.
    Q_INVOKABLE void insertObjectAtArrangedObjectIndex(const InfoPtr &info, qsizetype row);
    /// Appends a new record and selects it.
    Q_INVOKABLE void add();
    /// Removes the selected records and selects the row after them, so that removing can go on.
    Q_INVOKABLE void remove();
    Q_INVOKABLE void removeObjectsAtArrangedObjectIndexes(const runebook::IndexSet &rows);
    Q_INVOKABLE void moveObjectsInArrangedObjectsFromIndexesToIndex(const runebook::IndexSet &rows,
                                                                    qsizetype row);
    Q_INVOKABLE void copyObjectsInArrangedObjectsFromIndexesToIndex(const runebook::IndexSet &rows,
                                                                    qsizetype row);

public: // reordering by drag
    Q_INVOKABLE QObject *oTableView() const { return m_tableView; }
    /// Not owned; rows can be dragged in it from now on.
    void setOTableView(runebook::ListTable &table);
    /// Part of giving the controller its table: rows can be dragged from now on.
    Q_INVOKABLE void awakeFromNib() { m_draggingEnabled = true; }
    Q_INVOKABLE bool draggingEnabled() const { return m_draggingEnabled; }
    /// Rows can be dragged only while this is true, nothing is filtered and the document's order is shown.
    Q_INVOKABLE void setDraggingEnabled(bool enabled) { m_draggingEnabled = enabled; }
    Q_INVOKABLE bool tableObjectsSupportCopying() const;
    Q_INVOKABLE int rowsAboveRowInIndexSet(qsizetype row, const runebook::IndexSet &rows) const;
    Q_INVOKABLE runebook::IndexSet indexSetFromRows(const QVariantList &rows) const;
    /// The object asked by the table's questions and told of copies; it answers those that it implements as
    /// invokable operations. Not owned.
    Q_INVOKABLE void setDelegate(QObject *delegate) { m_questions.setDelegate(delegate); }
    Q_INVOKABLE QObject *delegate() const { return m_questions.delegate(); }
    /// The private type of dragged rows; its data never leave the table.
    static QString dragType() { return runebook::RowDrag::type(); }
    /// The data of a drag of these rows, to be owned by the drag; null when rows cannot be dragged now.
    QMimeData *mimeDataForRows(const runebook::IndexSet &rows) const;

public: // the same with a TableDrag as pasteboard and as what is dropped; operations are those of
        // Qt::DropAction
    /// Puts the rows into \a pasteboard; false when they cannot be dragged now.
    Q_INVOKABLE bool tableViewWriteRowsWithIndexesToPasteboard(QObject *tableView,
                                                               const runebook::IndexSet &rows,
                                                               QObject *pasteboard) const;
    /// What a drop would do: nothing for other tables' rows, copy when nothing else is allowed, else move. It
    /// always falls between rows.
    Q_INVOKABLE int tableViewValidateDropProposedRowProposedDropOperation(QObject *tableView, QObject *info,
                                                                          int row, int operation) const;
    /// Copies or moves the rows in front of \a row and selects them; false for other tables' rows.
    Q_INVOKABLE bool tableViewAcceptDropRowDropOperation(QObject *tableView, QObject *info, int row,
                                                         int operation);

public: // questions of the table, answered by the delegate where it does; columns are numbers from 0
    Q_INVOKABLE QObject *tableColumnInTableViewDataCellForRow(int column, QObject *tableView, int row) const;
    /// Usually what draws the cells of the column.
    Q_INVOKABLE QObject *tableViewDataCellForTableColumnRow(QObject *tableView, int column, int row) const;
    Q_INVOKABLE void tableViewWillDisplayCellForTableColumnRow(QObject *tableView, QObject *cell, int column,
                                                               int row) const;
    /// Usually true. The cells of some columns never can be edited.
    Q_INVOKABLE bool tableViewShouldEditTableColumnRow(QObject *tableView, int column, int row) const;
    Q_INVOKABLE QObject *viewAtColumnRowMakeIfNecessary(int column, int row, bool isMade) const;
    /// Usually false.
    Q_INVOKABLE bool tableViewShouldShowCellExpansionForTableColumnRow(QObject *tableView, int column,
                                                                       int row) const;
    /// Repaints the corner beside the header.
    Q_INVOKABLE void tableViewColumnDidResize(QObject *tableView) const;

public: // the item model
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    /// The rows are about to be other ones or in another order, and have become so.
    void arrangedObjectsAboutToChange();
    void arrangedObjectsChanged();
    void selectionChanged();
    /// The selection of before a step, or behind it, was given back with undo or redo.
    void placeGivenBack();
    /// The user should hear of what was typed into a cell: that it was refused, or that a file does not keep
    /// it.
    void remarked(const runebook::FieldRemark &remark);

private:
    void acceptRows(const runebook::IndexSet &rows, Qt::DropAction action, qsizetype row);
    struct Place;

    // What the document tells. The first changes of the list in a turn of the event loop show at once; many
    // of them, as scripts make, and those of a step that is undone under a filter show together.
    void applyInsertion(const runebook::IndexSet &places);
    void applyRemoval(const runebook::IndexSet &places);
    void applyReplacement(qsizetype place, const InfoPtr &former);
    void applyReset();
    bool canApplyNow();
    void fallBehind();
    /// Shows what was put off. Every question about rows begins with it.
    void catchUp() const;
    void insertRowsAt(const runebook::IndexSet &places);
    void removeRows(const runebook::IndexSet &rows);
    runebook::IndexSet rowsOfLeaving(const runebook::IndexSet &places) const;
    bool isInHistory() const;
    // Places in the list, which come back with undo and redo.
    std::shared_ptr<const void> rememberPlace();
    void giveBackPlace(const std::shared_ptr<const void> &place);
    void applyChanges(const std::vector<VXDocument::Change> &changes);
    enum class Filter { Apply, LeaveRows };
    bool arrange(Filter filter = Filter::Apply, runebook::Error *error = nullptr);
    /// \a passing with the records added by hand.
    std::optional<runebook::IndexSet> withAdded(std::optional<runebook::IndexSet> passing) const;
    /// The places of the rows that are shown, and of the records added by hand.
    runebook::IndexSet shownPlaces() const;
    InfoPtr infoOfRow(qsizetype row) const;
    void select(const runebook::IndexSet &rows);
    void selectRows(const runebook::IndexSet &rows);
    runebook::IndexSet rowsOfObjects(const InfoList &infos) const;
    /// Where in the document's list something goes that is inserted at a row.
    qsizetype placeForRow(qsizetype row) const;
    /// The places that pass (nothing: all) in the order of the sorted column.
    std::vector<quint32> placesInOrder(const std::optional<runebook::IndexSet> &passing);
    void replaceRows(std::vector<VXGlyphInfo *> rows);
    InfoList wantedSelection() const;
    void restoreSelection(const InfoList &wanted, const InfoList &currents);
    void restoreCurrent(InfoList infos, const std::function<InfoPtr(const InfoPtr &)> &orSuccessor);
    InfoPtr currentInfo() const;
    InfoList currentAndNeighbours() const;
    bool showsDocumentOrder() const;
    void rebuildRowNumbers() const;

    VXDocument &m_document;
    const std::unique_ptr<runebook::RowFilter> m_filter;
    const runebook::RowDrag m_drag;
    runebook::TableQuestions m_questions;
    std::vector<VXGlyphInfo *> m_rows; ///< owned by the document's list while they stand here
    mutable std::vector<qint32> m_rowOfPlace; ///< by place in the document's list; empty while not known
    std::vector<quint32> m_sortedPlaces; ///< empty in document order
    QItemSelectionModel *m_selection;
    InfoList m_hiddenSelection; ///< selected before the filter hid them; they come back with it
    InfoPtr m_hiddenCurrent; ///< the same for the current record
    int m_currentColumn = 0; ///< the last one, which a reset forgets
    /// Shown whether they pass the filter or not, until it is used again: whoever adds a record wants to see
    /// it.
    std::unordered_set<const VXGlyphInfo *> m_added;
    InfoList m_leavers; ///< gone from the list while rows still show them
    std::shared_ptr<const Place> m_place; ///< null while it has to be made again
    int m_listChanges = 0; ///< in this turn of the event loop
    bool m_isBehind = false;
    bool m_filtersNext = false; ///< when it catches up
    bool m_hasListChanged = false; ///< since a place was remembered
    bool m_isListReplaced = false;
    QElapsedTimer m_sinceCaughtUp;
    QPointer<QObject> m_tableView;
    runebook::ListTable *m_table = nullptr; ///< as long as there is the object
    int m_sortColumn = -1;
    Qt::SortOrder m_sortDirection = Qt::AscendingOrder;
    bool m_draggingEnabled = true;
    bool m_isRestoring = false;
};
