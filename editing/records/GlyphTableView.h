#pragma once

#include "editing/records/ListTable.h"
#include "model/VXGlyphInfo.h"

#include <QTableView>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

class QMenu;
class QMimeData;
class RSRTVArrayController;

namespace runebook {

class GlyphCellDelegate;

/// The table of records in a document window: columns that can be moved, sized, hidden and sorted and are
/// remembered, in-place editing, zoom, and a place that is kept whatever happens to the rows.
class GlyphTableView : public QTableView, public ListTable
{
    Q_OBJECT
public:
    explicit GlyphTableView(RSRTVArrayController &controller, QWidget *parent = nullptr);
    ~GlyphTableView() override;

    /// Columns, widths, order, sort and zoom as they were before anybody changed them.
    void resetViewSettings();
    /// Columns, widths, order and sort, to be given to restoreColumnState() in another run.
    QByteArray columnState() const;
    void restoreColumnState(const QByteArray &state);
    /// Shows the document's order in the header.
    void resetSortIndicator();
    void setColumnShown(int column, bool isShown);
    /// The fields of the columns that are shown, as they stand; the picture of the glyph is none.
    std::vector<GlyphField> shownFields() const;
    /// Adds an item for each column, ticked where it is shown.
    void fillColumnMenu(QMenu &menu);
    /// Steps of one point; 0 goes back to the size at the start.
    void zoom(int steps);
    /// Shows the record of a row and makes it the only selected one.
    void goToRow(int row);
    /// What is being typed into a cell: who edits it and takes it.
    GlyphCellDelegate &cellDelegate() const { return *m_cellDelegate; }
    /// Asked before a key or a click of the user chooses something else, here or in the header; nothing
    /// happens when it answers false.
    void setLeavingCondition(std::function<bool()> condition) { m_mayLeave = std::move(condition); }
    /// Makes what a drag of the selected rows offers to other programs.
    void setDragData(std::function<std::unique_ptr<QMimeData>()> maker) { m_dragData = std::move(maker); }

public: // as the list controller sees it
    QObject *object() override { return this; }
    QObject *cellAt(const QModelIndex &index) const override { return itemDelegateForIndex(index); }
    void repaintCells() override { viewport()->update(); }
    void repaintCorner() override;

Q_SIGNALS:
    void sortChanged();
    /// Why the rows that the user began to drag cannot be moved now.
    void dragRefused(const QString &reason);
    /// The user pressed Delete on the selected rows.
    void deleteRequested();
    /// The user wants the menu of commands on the selected rows at that place of the screen.
    void rowMenuRequested(const QPoint &place);

protected:
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    struct Anchor {
        std::weak_ptr<VXGlyphInfo> info;
        QString name; ///< by which it is found in another reading of the file
        int y = 0; ///< of the row's top in the viewport
    };

    void setUpHeader();
    void restoreViewSettings();
    void applyColumnState(const QByteArray &state);
    void scheduleStore();
    void storeViewSettings();
    void applyFontSize(double pointSize);
    void fillSortMenu(QMenu &menu, int column);
    void showHeaderMenu(const QPoint &position);
    void editCurrentRow();
    void goToEnd(Qt::Key key, Qt::KeyboardModifiers modifiers);
    void sortByIndicator();
    void restoreSortOfFile();
    void storeSortOfFile() const;
    void rememberPlace();
    void restorePlace();
    bool restoreAnchor(const Anchor &anchor);
    int dropRowAt(int y) const;
    void showDropRow(int row);

    RSRTVArrayController &m_controller;
    GlyphCellDelegate *m_cellDelegate;
    std::function<bool()> m_mayLeave = [] { return true; };
    std::function<std::unique_ptr<QMimeData>()> m_dragData;
    QTimer m_storeTimer;
    Anchor m_current;
    Anchor m_top;
    Anchor m_hidden; ///< what was current when a filter took it out of sight
    bool m_isRestoring = false;
    bool m_isArranging = false;
    bool m_wasDragRefused = false; ///< since the button was pressed
    int m_dropRow = -1; ///< in front of which dragged rows would fall
};

} // namespace runebook
