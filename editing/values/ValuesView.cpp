#include "editing/values/ValuesView.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>

namespace runebook {

ValuesView::ValuesView(ValuesModel &model, QWidget *parent)
    : QTableView(parent), m_model(model), m_delegate(new ValueDelegate(this))
{
    setModel(&model);
    setItemDelegate(m_delegate);
    setFrameShape(QFrame::NoFrame);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setCornerButtonEnabled(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    QHeaderView *columns = horizontalHeader();
    columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    columns->setHighlightSections(false);
    columns->setSectionResizeMode(ValuesModel::ValueColumn, QHeaderView::Stretch);
    columns->setSectionResizeMode(ValuesModel::CountColumn, QHeaderView::Fixed);
    columns->resizeSection(ValuesModel::CountColumn,
                           fontMetrics().horizontalAdvance(QStringLiteral("9,999,999")) + 70);
    columns->setSortIndicatorShown(true);
    columns->setSectionsClickable(true);
}

// Choosing

void ValuesView::choose(const QModelIndex &index, Qt::KeyboardModifiers modifiers)
{
    if (!m_model.canBeChosen(index))
        return;
    const Choice choice = modifiers & (Qt::AltModifier | Qt::ShiftModifier) ? Choice::Without
        : modifiers & Qt::ControlModifier                                   ? Choice::Too
                                                                            : Choice::Only;
    Q_EMIT chosen(index.data(ValuesModel::TextRole).toString(), choice);
}

void ValuesView::mousePressEvent(QMouseEvent *event)
{
    m_pressed = event->button() == Qt::LeftButton ? indexAt(event->pos()) : QModelIndex();
    QTableView::mousePressEvent(event);
}

void ValuesView::mouseReleaseEvent(QMouseEvent *event)
{
    QTableView::mouseReleaseEvent(event);
    const QModelIndex released = indexAt(event->pos());
    const bool isClick = event->button() == Qt::LeftButton && released.isValid() && released == m_pressed;
    m_pressed = QModelIndex();
    if (isClick)
        choose(released, event->modifiers());
}

/// Begins with a click that chose the value; whoever wants to rename it means the records as they were shown.
void ValuesView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    if (event->button() != Qt::LeftButton || !index.isValid()
        || event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier))
        return;
    setCurrentIndex(index.siblingAtColumn(ValuesModel::ValueColumn));
    Q_EMIT choiceTakenBack();
    renameCurrent();
}

QItemSelectionModel::SelectionFlags ValuesView::selectionCommand(const QModelIndex &index,
                                                                 const QEvent *) const
{
    return index.isValid() ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows
                           : QItemSelectionModel::NoUpdate;
}

void ValuesView::renameCurrent()
{
    const QModelIndex index = currentIndex().siblingAtColumn(ValuesModel::ValueColumn);
    if (!index.isValid())
        return;
    if (index.flags() & Qt::ItemIsEditable)
        edit(index);
    else
        Q_EMIT renameRefused();
}

// Keys

bool ValuesView::event(QEvent *event)
{
    // The keys of the window's menus mean this list while it has the focus.
    if (event->type() == QEvent::ShortcutOverride && takesEditKey(static_cast<QKeyEvent &>(*event), false)) {
        event->accept();
        return true;
    }
    return QTableView::event(event);
}

/// Nothing can be cut from the list, pasted into it or removed.
bool ValuesView::takesEditKey(QKeyEvent &key, bool acts)
{
    const bool copies = key.matches(QKeySequence::Copy);
    if (copies && acts)
        copyCurrent();
    const bool isSpace = key.key() == Qt::Key_Space && key.modifiers() & Qt::ControlModifier;
    return copies || isSpace || key.matches(QKeySequence::SelectAll) || key.matches(QKeySequence::Cut)
        || key.matches(QKeySequence::Paste) || key.matches(QKeySequence::Delete);
}

void ValuesView::keyPressEvent(QKeyEvent *event)
{
    if (state() == EditingState) // the key that ends the typing of a value comes here, too
        return;
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        choose(currentIndex(), event->modifiers());
        return;
    case Qt::Key_F2:
        renameCurrent();
        return;
    case Qt::Key_Home:
        setCurrentIndex(m_model.index(0, ValuesModel::ValueColumn));
        return;
    case Qt::Key_End:
        setCurrentIndex(m_model.index(m_model.rowCount() - 1, ValuesModel::ValueColumn));
        return;
    default:
        break;
    }
    if (takesEditKey(*event, true))
        return;
    const bool isTyped = !event->text().isEmpty() && event->text().front().isPrint()
        && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (isTyped)
        Q_EMIT searchTyped(event->text());
    else
        QTableView::keyPressEvent(event);
}

void ValuesView::copyCurrent() const
{
    if (currentIndex().isValid())
        QApplication::clipboard()->setText(m_model.lineOf(currentIndex().row()));
}

void ValuesView::copyAll() const
{
    QString lines;
    for (int row = 0; row < m_model.rowCount(); ++row)
        lines += m_model.lineOf(row);
    QApplication::clipboard()->setText(lines);
}

} // namespace runebook
