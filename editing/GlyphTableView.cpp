#include "editing/GlyphTableView.h"

#include "editing/GlyphCellDelegate.h"
#include "editing/GlyphColumns.h"
#include "editing/RSRTVArrayController.h"
#include "platform/UserDefaults.h"

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

const QString kHeaderState = u"TableHeaderState"_s;
const QString kFontSize = u"TableFontSize"_s;
constexpr double kSmallest = 7;
constexpr double kLargest = 40;

double standardFontSize()
{
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).pointSizeF();
}

} // namespace

GlyphTableView::GlyphTableView(RSRTVArrayController &controller, QWidget *parent)
    : QTableView(parent), m_controller(controller)
{
    setAccessibleName(tr("Glyph infos"));
    setItemDelegate(new GlyphCellDelegate(controller.document(), this));
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
    setDropIndicatorShown(true);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_controller.setOTableView(this);
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
    connect(header, &QHeaderView::sortIndicatorChanged, this, [this](int column, Qt::SortOrder order) {
        if (column != m_controller.sortColumn() || order != m_controller.sortDirection())
            m_controller.sort(column, order);
        scheduleStore();
        Q_EMIT sortChanged();
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
    m_isRestoring = false;
}

void GlyphTableView::restoreViewSettings()
{
    m_isRestoring = true;
    const QVariant size = UserDefaults::standard().objectForKey(kFontSize);
    applyFontSize(size.isValid() ? size.toDouble() : standardFontSize());
    applyColumnState(UserDefaults::standard().objectForKey(kHeaderState).toByteArray());
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
    if (header->sortIndicatorSection() != m_controller.sortColumn())
        m_controller.sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
}

void GlyphTableView::scheduleStore()
{
    if (!m_isRestoring)
        m_storeTimer.start();
}

void GlyphTableView::storeViewSettings()
{
    m_storeTimer.stop();
    UserDefaults::standard().setObjectForKey(horizontalHeader()->saveState(), kHeaderState);
}

void GlyphTableView::resetViewSettings()
{
    m_storeTimer.stop();
    UserDefaults::standard().removeObjectForKey(kHeaderState);
    UserDefaults::standard().removeObjectForKey(kFontSize);
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
        connect(action, &QAction::toggled, this,
                [this, column](bool isShown) { setColumnShown(column, isShown); });
    }
}

void GlyphTableView::showHeaderMenu(const QPoint &position)
{
    QHeaderView *header = horizontalHeader();
    QMenu menu(this);
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
    UserDefaults::standard().setObjectForKey(size, kFontSize);
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
    // Return edits the cell like F2; the platforms do not agree on it.
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !event->modifiers() && state() != EditingState && currentIndex().isValid()) {
        edit(currentIndex());
        return;
    }
    if (event->matches(QKeySequence::Delete) && state() != EditingState) {
        Q_EMIT deleteRequested();
        return;
    }
    QTableView::keyPressEvent(event);
}

// The place that is kept

void GlyphTableView::goToRow(int row)
{
    m_controller.setSelectionIndexes({row});
    setCurrentIndex(model()->index(row, qMax(0, currentIndex().column())));
    scrollTo(model()->index(row, 0), PositionAtCenter);
}

void GlyphTableView::rememberPlace()
{
    const auto anchorOf = [this](int row) {
        return Anchor {m_controller.arrangedObjectAtIndex(row), rowViewportPosition(row)};
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
    const int row = info ? static_cast<int>(m_controller.rowOfObject(info)) : -1;
    if (row < 0)
        return false;
    updateGeometries(); // the scroll bar still has the range of the rows before
    verticalScrollBar()->setValue(verticalScrollBar()->value() + rowViewportPosition(row) - anchor.y);
    return true;
}

void GlyphTableView::restorePlace()
{
    if (!m_hidden.info.expired() && restoreAnchor(m_hidden)) {
        m_hidden = {};
        return;
    }
    if (restoreAnchor(m_current))
        return;
    if (m_hidden.info.expired())
        m_hidden = m_current;
    restoreAnchor(m_top);
}

// Dragging rows

void GlyphTableView::startDrag(Qt::DropActions supportedActions)
{
    // The base class would make a picture of every dragged row, be there a hundred thousand.
    QMimeData *dragged = m_controller.mimeDataForRows(m_controller.selectionIndexes());
    if (!dragged)
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(dragged);
    const qsizetype count = m_controller.selectedCount();
    const QString text = count == 1 ? cellDisplayText(m_controller.selectedObjects().front()->name())
                                    : tr("%n glyph infos", nullptr, static_cast<int>(count));
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

void GlyphTableView::dragMoveEvent(QDragMoveEvent *event)
{
    QTableView::dragMoveEvent(event);
    if (event->source() != this) {
        event->ignore();
        return;
    }
    event->accept();
}

void GlyphTableView::dropEvent(QDropEvent *event)
{
    if (event->source() != this || !event->mimeData()->hasFormat(RSRTVArrayController::dragType())) {
        event->ignore();
        return;
    }
    // Always between rows: in front of the row under the upper half of which it was let go.
    const QPoint position = event->position().toPoint();
    int row = rowAt(position.y());
    if (row < 0)
        row = model()->rowCount();
    else if (position.y() > rowViewportPosition(row) + rowHeight(row) / 2)
        ++row;
    model()->dropMimeData(event->mimeData(), event->dropAction(), row, 0, {});
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    stopAutoScroll();
    setState(NoState);
    viewport()->update();
}

} // namespace runebook
