#include "editing/records/GlyphTableView.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphCellDelegate.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/records/RecordSettings.h"

#include <QApplication>
#include <QDrag>
#include <QDragMoveEvent>
#include <QFontDatabase>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostSorts = 50;
constexpr double kSmallest = 7;
constexpr double kLargest = 40;

double standardFontSize()
{
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).pointSizeF();
}

bool isPress(const QEvent &event)
{
    return event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
}

} // namespace

GlyphTableView::GlyphTableView(RSRTVArrayController &controller, QWidget *parent)
    : QTableView(parent), m_controller(controller), m_cellDelegate(new GlyphCellDelegate(controller, this))
{
    setAccessibleName(tr("Glyphs"));
    setItemDelegate(m_cellDelegate);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    setDragDropMode(InternalMove);
    setDragDropOverwriteMode(false);
    setDefaultDropAction(Qt::MoveAction);
    setDropIndicatorShown(false); // the line of the base class spans a cell; this one draws its own
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setModel(&m_controller);
    setSelectionModel(m_controller.selectionModel());
    connect(horizontalHeader(), &QHeaderView::sectionResized, this,
            [this] { m_controller.tableViewColumnDidResize(this); });
    m_controller.setOTableView(*this);
    // A header asks of every column, each time it is painted, whether all of its cells are selected, row by
    // row. It shows no selection here, so it gets one of its own that stays empty.
    horizontalHeader()->setSelectionModel(new QItemSelectionModel(model(), horizontalHeader()));
    setUpHeader();
    restoreViewSettings();

    m_storeTimer.setSingleShot(true);
    m_storeTimer.setInterval(300);
    connect(&m_storeTimer, &QTimer::timeout, this, &GlyphTableView::storeViewSettings);
    connect(&m_controller, &RSRTVArrayController::arrangedObjectsAboutToChange, this,
            &GlyphTableView::rememberPlace);
    connect(&m_controller, &RSRTVArrayController::arrangedObjectsChanged, this,
            &GlyphTableView::restorePlace);
    // Who chooses another record wants to see that one.
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
        if (!m_isArranging)
            m_hidden = {};
    });
    connect(&m_controller, &RSRTVArrayController::placeGivenBack, this, [this] {
        if (currentIndex().isValid())
            scrollTo(currentIndex());
    });
    connect(&m_controller.document(), &runebook::Document::saved, this, &GlyphTableView::storeSortOfFile);
}

GlyphTableView::~GlyphTableView()
{
    if (m_storeTimer.isActive())
        storeViewSettings();
}

// Columns

void GlyphTableView::setUpHeader()
{
    QHeaderView *header = horizontalHeader();
    header->viewport()->installEventFilter(this);
    header->setSectionsMovable(true);
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSortIndicatorClearable(true);
    header->setSortIndicator(-1, Qt::AscendingOrder);
    header->setMinimumSectionSize(36);
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    header->setToolTip(
        tr("Click to sort; a third click goes back to the order of the document. Drag to move, "
           "right-click to choose columns."));
    connect(header, &QHeaderView::customContextMenuRequested, this, &GlyphTableView::showHeaderMenu);
    connect(header, &QHeaderView::sectionResized, this, &GlyphTableView::scheduleStore);
    connect(header, &QHeaderView::sectionMoved, this, &GlyphTableView::scheduleStore);
    connect(header, &QHeaderView::sortIndicatorChanged, this, [this] {
        if (m_isRestoring)
            return;
        sortByIndicator();
        storeSortOfFile();
    });
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
}

QByteArray GlyphTableView::columnState() const
{
    return horizontalHeader()->saveState();
}

void GlyphTableView::restoreColumnState(const QByteArray &state)
{
    if (state.isEmpty())
        return;
    m_isRestoring = true;
    applyColumnState(state);
    sortByIndicator();
    m_isRestoring = false;
}

void GlyphTableView::restoreViewSettings()
{
    m_isRestoring = true;
    applyFontSize(Settings::kTableFontSize.valueOr(standardFontSize()));
    applyColumnState(Settings::kTableColumns.value());
    restoreSortOfFile();
    sortByIndicator();
    m_isRestoring = false;
}

/// An empty state, or one of other columns, gives the columns as they are at first.
void GlyphTableView::applyColumnState(const QByteArray &state)
{
    const std::span<const GlyphColumn> columns = glyphColumns();
    QHeaderView *header = horizontalHeader();
    if (state.isEmpty() || !header->restoreState(state)
        || header->count() != static_cast<int>(columns.size())) {
        for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
            const GlyphColumn &column = columns[static_cast<std::size_t>(i)];
            header->moveSection(header->visualIndex(i), i);
            header->resizeSection(i, column.width);
            header->setSectionHidden(i, !column.isShown);
        }
        header->setSortIndicator(-1, Qt::AscendingOrder);
    }
    header->setSectionsMovable(true);
    header->setSortIndicatorClearable(true);
    header->setStretchLastSection(true);
}

void GlyphTableView::sortByIndicator()
{
    const int column = horizontalHeader()->sortIndicatorSection();
    const Qt::SortOrder order = horizontalHeader()->sortIndicatorOrder();
    if (column != m_controller.sortColumn() || (column >= 0 && order != m_controller.sortDirection()))
        m_controller.sort(column, order);
    Q_EMIT sortChanged();
}

/// The columns are those of all windows; what a file is sorted by is a matter of the file.
void GlyphTableView::restoreSortOfFile()
{
    int column = -1;
    auto order = Qt::AscendingOrder;
    const QString path = m_controller.document().fileURL();
    for (const QVariant &entry : Settings::kTableSorts.value()) {
        const QStringList words = entry.toStringList();
        const auto field = words.size() == 3 && words.at(0) == path ? fieldForKey(words.at(1)) : std::nullopt;
        if (!field)
            continue;
        column = columnOfField(*field);
        order = words.at(2) == "descending"_L1 ? Qt::DescendingOrder : Qt::AscendingOrder;
    }
    horizontalHeader()->setSortIndicator(path.isEmpty() ? -1 : column, order);
}

void GlyphTableView::storeSortOfFile() const
{
    const QString path = m_controller.document().fileURL();
    if (path.isEmpty())
        return;
    const QVariantList before = Settings::kTableSorts.value();
    QVariantList sorts = before;
    sorts.removeIf([&path](const QVariant &entry) { return entry.toStringList().value(0) == path; });
    if (const int column = m_controller.sortColumn(); column >= 0)
        sorts << QVariant(QStringList {
            path, keyOfField(glyphColumns()[static_cast<std::size_t>(column)].field),
            m_controller.sortDirection() == Qt::DescendingOrder ? u"descending"_s : u"ascending"_s});
    if (sorts != before)
        Settings::kTableSorts.set(sorts.mid(qMax(0, sorts.size() - kMostSorts)));
}

void GlyphTableView::scheduleStore()
{
    if (!m_isRestoring)
        m_storeTimer.start();
}

void GlyphTableView::storeViewSettings()
{
    m_storeTimer.stop();
    Settings::kTableColumns.set(horizontalHeader()->saveState());
}

void GlyphTableView::resetViewSettings()
{
    m_storeTimer.stop();
    resetSortIndicator();
    Settings::kTableColumns.reset();
    Settings::kTableFontSize.reset();
    restoreViewSettings();
}

void GlyphTableView::resetSortIndicator()
{
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
}

void GlyphTableView::setColumnShown(int column, bool isShown)
{
    horizontalHeader()->setSectionHidden(column, !isShown);
    scheduleStore();
}

void GlyphTableView::fillColumnMenu(QMenu &menu)
{
    const QHeaderView *header = horizontalHeader();
    for (int column = 0; column < header->count(); ++column) {
        QAction *action = menu.addAction(columnTitle(column));
        action->setCheckable(true);
        action->setChecked(!header->isSectionHidden(column));
        // The name stays: a table without any column could not be got back.
        action->setEnabled(glyphColumns()[static_cast<std::size_t>(column)].field != GlyphField::Name);
        connect(action, &QAction::toggled, this, [this, column](bool isShown) {
            if (m_mayLeave())
                setColumnShown(column, isShown);
        });
    }
}

/// What can be done with one column.
void GlyphTableView::fillSortMenu(QMenu &menu, int column)
{
    if (column < 0)
        return;
    QHeaderView *header = horizontalHeader();
    const auto sort = [header, column](Qt::SortOrder order) { header->setSortIndicator(column, order); };
    menu.addAction(tr("Sort &Ascending"), this, [sort] { sort(Qt::AscendingOrder); });
    menu.addAction(tr("Sort &Descending"), this, [sort] { sort(Qt::DescendingOrder); });
    const auto hide = [this, column] {
        if (m_mayLeave())
            setColumnShown(column, false);
    };
    menu.addAction(tr("&Hide “%1”").arg(columnTitle(column)), this, hide)
        ->setEnabled(glyphColumns()[static_cast<std::size_t>(column)].field != GlyphField::Name);
    menu.addSeparator();
}

void GlyphTableView::showHeaderMenu(const QPoint &position)
{
    QHeaderView *header = horizontalHeader();
    QMenu menu(this);
    fillSortMenu(menu, header->logicalIndexAt(position));
    fillColumnMenu(menu);
    menu.addSeparator();
    menu.addAction(tr("Document Order"), this, &GlyphTableView::resetSortIndicator)
        ->setEnabled(m_controller.sortColumn() >= 0);
    menu.addAction(tr("Reset Columns and Zoom"), this, &GlyphTableView::resetViewSettings);
    menu.exec(header->mapToGlobal(position));
}

// Zoom

void GlyphTableView::applyFontSize(double pointSize)
{
    QFont cellFont = font();
    cellFont.setPointSizeF(qBound(kSmallest, pointSize, kLargest));
    setFont(cellFont);
    horizontalHeader()->setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    verticalHeader()->setDefaultSectionSize(QFontMetrics(cellFont).height() + 8);
}

void GlyphTableView::zoom(int steps)
{
    const double size =
        steps == 0 ? standardFontSize() : qBound(kSmallest, font().pointSizeF() + steps, kLargest);
    rememberPlace();
    applyFontSize(size);
    restorePlace();
    Settings::kTableFontSize.set(size);
}

void GlyphTableView::repaintCorner()
{
    if (QWidget *corner = cornerWidget())
        corner->update();
}

bool GlyphTableView::event(QEvent *event)
{
    // A text that is refused elsewhere must not lose its record to a key here.
    if (event->type() == QEvent::KeyPress && state() != EditingState && !m_mayLeave())
        return true;
    return QTableView::event(event);
}

bool GlyphTableView::viewportEvent(QEvent *event)
{
    if (isPress(*event) && !m_mayLeave())
        return true;
    return QTableView::viewportEvent(event);
}

bool GlyphTableView::eventFilter(QObject *watched, QEvent *event)
{
    // Sorting, too, ends the editing of a cell.
    if (watched == horizontalHeader()->viewport() && isPress(*event) && !m_mayLeave())
        return true;
    return QTableView::eventFilter(watched, event);
}

void GlyphTableView::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QTableView::wheelEvent(event);
        return;
    }
    if (event->angleDelta().y() != 0)
        zoom(event->angleDelta().y() > 0 ? 1 : -1);
    event->accept();
}

void GlyphTableView::keyPressEvent(QKeyEvent *event)
{
    if (state() == EditingState) {
        QTableView::keyPressEvent(event);
        return;
    }
    const bool isPlain = !(event->modifiers() & ~Qt::KeypadModifier);
    const int key = event->key();
    if (event->matches(QKeySequence::Delete)) {
        Q_EMIT deleteRequested();
    } else if (isPlain && (key == Qt::Key_F2 || key == Qt::Key_Return || key == Qt::Key_Enter)) {
        // Return edits the cell like F2; the platforms do not agree on it.
        editCurrentRow();
    } else if (key == Qt::Key_Space && currentIndex().isValid()) {
        // The base class also takes it for the beginning of a name.
        selectionModel()->select(currentIndex(), selectionCommand(currentIndex(), event));
    } else if ((event->modifiers() & Qt::ControlModifier) && (key == Qt::Key_Home || key == Qt::Key_End)) {
        goToEnd(static_cast<Qt::Key>(key), event->modifiers());
    } else {
        QTableView::keyPressEvent(event);
    }
}

/// The current cell, or the name where the current one cannot be edited.
void GlyphTableView::editCurrentRow()
{
    QModelIndex cell = currentIndex();
    if (!cell.isValid())
        return;
    if (!(cell.flags() & Qt::ItemIsEditable)) {
        cell = cell.siblingAtColumn(columnOfField(GlyphField::Name));
        setCurrentIndex(cell);
    }
    if ((cell.flags() & Qt::ItemIsEditable) && !m_cellDelegate->editElsewhere(cell))
        edit(cell);
}

/// The base class moves the frame alone and leaves the selection where it was.
void GlyphTableView::goToEnd(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    const int last = model()->rowCount() - 1;
    if (last < 0)
        return;
    const int column = qMax(0, currentIndex().column());
    const QModelIndex target = model()->index(key == Qt::Key_Home ? 0 : last, column);
    if (modifiers & Qt::ShiftModifier) {
        const int from = qMax(0, currentIndex().row());
        const QItemSelection range(model()->index(qMin(from, target.row()), 0),
                                   model()->index(qMax(from, target.row()), model()->columnCount() - 1));
        selectionModel()->select(range, QItemSelectionModel::Select);
        selectionModel()->setCurrentIndex(target, QItemSelectionModel::NoUpdate);
    } else {
        m_controller.setSelectionIndexes({target.row()});
    }
    scrollTo(target);
}

// The place that is kept

void GlyphTableView::goToRow(int row)
{
    setCurrentIndex(model()->index(row, qMax(0, currentIndex().column())));
    m_controller.setSelectionIndexes({row}); // afterwards: while Ctrl is held the above deselects
    scrollTo(model()->index(row, 0), PositionAtCenter);
}

void GlyphTableView::rememberPlace()
{
    m_isArranging = true;
    const auto anchorOf = [this](int row) {
        const InfoPtr info = m_controller.arrangedObjectAtIndex(row);
        return Anchor {info, info ? info->name() : QString(), rowViewportPosition(row)};
    };
    m_top = anchorOf(rowAt(0));
    m_current = anchorOf(currentIndex().row());
    const bool isVisible = m_current.y > -rowHeight(0) && m_current.y < viewport()->height();
    if (!isVisible && !m_top.info.expired())
        m_current = m_top;
}

bool GlyphTableView::restoreAnchor(const Anchor &anchor)
{
    const InfoPtr info = anchor.info.lock();
    auto row = info ? static_cast<int>(m_controller.rowOfObject(info)) : -1;
    if (const InfoPtr successor = row < 0 ? m_controller.successorOf(anchor.name) : nullptr)
        row = static_cast<int>(m_controller.rowOfObject(successor));
    if (row < 0)
        return false;
    updateGeometries(); // the scroll bar still has the range of the rows before
    verticalScrollBar()->setValue(verticalScrollBar()->value() + rowViewportPosition(row) - anchor.y);
    return true;
}

void GlyphTableView::restorePlace()
{
    m_isArranging = false;
    if (!m_hidden.info.expired() && restoreAnchor(m_hidden)) {
        m_hidden = {};
        return;
    }
    if (restoreAnchor(m_current))
        return;
    // What was removed does not come back with a filter.
    const InfoPtr current = m_current.info.lock();
    if (m_hidden.info.expired() && current && current->listings() > 0)
        m_hidden = m_current;
    restoreAnchor(m_top);
}

std::vector<GlyphField> GlyphTableView::shownFields() const
{
    std::vector<GlyphField> fields;
    for (int place = 0; place < horizontalHeader()->count(); ++place) {
        const int column = horizontalHeader()->logicalIndex(place);
        if (!isColumnHidden(column) && isEditableColumn(column))
            fields.push_back(glyphColumns()[static_cast<std::size_t>(column)].field);
    }
    return fields;
}

// Dragging rows

namespace {

/// While rows are dragged, the program's own fields do not take them as text.
class OnlyForOthers : public QObject
{
public:
    explicit OnlyForOthers(QWidget &source) : m_source(source) { qApp->installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isDrag = event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove;
        const auto *widget = qobject_cast<QWidget *>(watched);
        if (!isDrag || !widget || qobject_cast<const GlyphTableView *>(widget)
            || qobject_cast<const GlyphTableView *>(widget->parentWidget()))
            return false;
        auto *drag = static_cast<QDragMoveEvent *>(event);
        if (drag->source() != &m_source)
            return false;
        drag->ignore();
        return true;
    }

private:
    QWidget &m_source;
};

} // namespace

void GlyphTableView::startDrag(Qt::DropActions supportedActions)
{
    // The base class would make a picture of every dragged row, be there a hundred thousand.
    QMimeData *dragged = m_controller.mimeDataForRows(m_controller.selectionIndexes());
    if (!dragged) {
        m_wasDragRefused = true;
        Q_EMIT dragRefused(m_controller.isFiltered()
                               ? tr("Rows can be moved while all records are shown: clear the search first.")
                               : tr("Rows can be moved in the order of the document only: choose View > "
                                    "Document Order first."));
        return;
    }
    if (m_dragData) {
        std::unique_ptr<QMimeData> offered = m_dragData();
        offered->setData(RSRTVArrayController::dragType(), dragged->data(RSRTVArrayController::dragType()));
        delete std::exchange(dragged, offered.release());
    }
    auto *drag = new QDrag(this);
    drag->setMimeData(dragged);
    const OnlyForOthers onlyForOthers(*this);
    const qsizetype count = m_controller.selectedCount();
    const QString text = count == 1
        ? cellDisplayText(*m_controller.selectedObjects().front(), GlyphField::Name)
        : tr("%1 glyphs").arg(locale().toString(static_cast<qlonglong>(count)));
    const QSize size = fontMetrics().size(Qt::TextSingleLine, text) + QSize(16, 8);
    QPixmap picture(size * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(palette().color(QPalette::Highlight));
    QPainter painter(&picture);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, text);
    painter.end();
    drag->setPixmap(picture);
    drag->exec(supportedActions, Qt::MoveAction);
}

void GlyphTableView::mousePressEvent(QMouseEvent *event)
{
    m_wasDragRefused = false;
    QTableView::mousePressEvent(event);
}

void GlyphTableView::mouseMoveEvent(QMouseEvent *event)
{
    // Going on with a drag that could not begin would select all rows on the way.
    if (!m_wasDragRefused || !event->buttons())
        QTableView::mouseMoveEvent(event);
}

void GlyphTableView::dragMoveEvent(QDragMoveEvent *event)
{
    QTableView::dragMoveEvent(event);
    if (event->source() != this) {
        event->ignore();
        showDropRow(-1);
        return;
    }
    event->accept();
    showDropRow(dropRowAt(event->position().toPoint().y()));
}

void GlyphTableView::dragLeaveEvent(QDragLeaveEvent *event)
{
    QTableView::dragLeaveEvent(event);
    showDropRow(-1);
}

/// Always between rows: in front of the row under the upper half of which it would be let go.
int GlyphTableView::dropRowAt(int y) const
{
    const int row = rowAt(y);
    if (row < 0)
        return model()->rowCount();
    return y > rowViewportPosition(row) + rowHeight(row) / 2 ? row + 1 : row;
}

void GlyphTableView::showDropRow(int row)
{
    if (std::exchange(m_dropRow, row) != row)
        viewport()->update();
}

void GlyphTableView::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (m_dropRow < 0)
        return;
    constexpr int kWidth = 2;
    const int last = model()->rowCount() - 1;
    const int y =
        m_dropRow <= last ? rowViewportPosition(m_dropRow) : rowViewportPosition(last) + rowHeight(last);
    QPainter painter(viewport());
    painter.fillRect(
        QRect(0, qBound(0, y - kWidth / 2, viewport()->height() - kWidth), viewport()->width(), kWidth),
        palette().color(QPalette::Highlight));
}

void GlyphTableView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool isKey = event->reason() == QContextMenuEvent::Keyboard;
    const QRect current = visualRect(currentIndex()).intersected(viewport()->rect());
    Q_EMIT rowMenuRequested(isKey ? viewport()->mapToGlobal(current.bottomLeft()) : event->globalPos());
}

void GlyphTableView::dropEvent(QDropEvent *event)
{
    if (event->source() != this || !event->mimeData()->hasFormat(RSRTVArrayController::dragType())) {
        event->ignore();
        return;
    }
    const int row = dropRowAt(event->position().toPoint().y());
    showDropRow(-1);
    model()->dropMimeData(event->mimeData(), event->dropAction(), row, 0, {});
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    stopAutoScroll();
    setState(NoState);
    viewport()->update();
}

} // namespace runebook
