// What reaches the bar from outside: events, keys, menus, and tabs of other bars.
#include "tabbar/PSMOverflowPopUpButton.h"
#include "tabbar/TabBarButton.h"
#include "tabbar/TabBarMouse.h"
#include "tabbar/TabResizeHandle.h"
#include "tabbar/TabStyles.h"
#include "tabbar/VXTabBarControl.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QShortcut>
#include <QToolTip>
#include <QWheelEvent>
#include <QWidgetAction>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kLongestPlainMenu = 15;

/// A tab between two bars.
class TabMimeData : public QMimeData
{
public:
    TabMimeData(VXTabBarControl *source, QObject *item) : m_source(source), m_item(item)
    {
        setData(VXTabBarControl::itemPasteboardType(), item->property("title").toString().toUtf8());
    }
    VXTabBarControl *source() const { return m_source; }
    QObject *item() const { return m_item; }

private:
    QPointer<VXTabBarControl> m_source;
    QPointer<QObject> m_item;
};

/// \a text as a tool tip or menu shows it unchanged, whatever markup it looks like.
QString plainToolTip(const QString &text)
{
    return text.isEmpty() ? QString()
                          : u"<p style='white-space:pre-wrap'>"_s + text.toHtmlEscaped() + u"</p>"_s;
}

QString plainMenuTitle(QString text)
{
    return text.replace(u"&"_s, u"&&"_s);
}

} // namespace

void VXTabBarControl::makeButtons()
{
    m_overflowButton = new PSMOverflowPopUpButton(this);
    QMenu *menu = m_overflowButton->menu();
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { menuNeedsUpdate(menu); });
    m_addTabButton = new runebook::AddTabButton(this);
    connect(m_addTabButton, &QToolButton::clicked, this, &VXTabBarControl::addTabRequested);
    m_addTabButton->hide();
    m_resizeHandle = new runebook::TabResizeHandle(*this);
}

void VXTabBarControl::makeShortcuts()
{
    struct Entry {
        QKeyCombination key;
        void (VXTabBarControl::*command)(int);
        int step;
    };
    const Entry entries[] = {
        {Qt::CTRL | Qt::Key_Tab, &VXTabBarControl::selectNeighbour, 1},
        {Qt::CTRL | Qt::SHIFT | Qt::Key_Tab, &VXTabBarControl::selectNeighbour, -1},
        {Qt::CTRL | Qt::Key_PageDown, &VXTabBarControl::selectNeighbour, 1},
        {Qt::CTRL | Qt::Key_PageUp, &VXTabBarControl::selectNeighbour, -1},
        {Qt::CTRL | Qt::SHIFT | Qt::Key_PageDown, &VXTabBarControl::moveSelectedTab, 1},
        {Qt::CTRL | Qt::SHIFT | Qt::Key_PageUp, &VXTabBarControl::moveSelectedTab, -1},
    };
    for (const Entry &entry : entries) {
        auto *shortcut = new QShortcut(QKeySequence(entry.key), this);
        connect(shortcut, &QShortcut::activated, this, [this, entry] { (this->*entry.command)(entry.step); });
    }
}

void VXTabBarControl::selectNeighbour(int step)
{
    const int count = int(countOfTabItems());
    if (count == 0)
        return;
    const int from = m_selectionIndex == NotFound ? (step > 0 ? -1 : 0) : int(m_selectionIndex);
    selectTabItemAtIndex(uint((from + step + count) % count));
}

void VXTabBarControl::moveSelectedTab(int step)
{
    QObject *item = selectedTabItem();
    const int to = int(m_selectionIndex) + step;
    if (!item || to < 0 || to >= int(countOfTabItems()))
        return;
    moveTabItemToIndex(item, uint(to));
    update(true);
    Q_EMIT tabItemMoved(item);
}

// --- events

bool VXTabBarControl::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ToolTip: {
        const auto *help = static_cast<QHelpEvent *>(event);
        if (!showToolTip(help->pos()))
            QToolTip::hideText();
        return true;
    }
    case QEvent::ShortcutOverride:
        // A drag has grabbed the keyboard: no shortcut may pull tabs away from under it.
        if (m_mouse->isDragging()) {
            event->accept();
            return true;
        }
        break;
    case QEvent::Polish:
        m_isAwake = true;
        break;
    case QEvent::Hide:
    case QEvent::UngrabMouse:
        if (m_mouse->isDragging())
            m_mouse->cancelDrag();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void VXTabBarControl::resizeEvent(QResizeEvent *)
{
    m_isResizing = true;
    update(false);
    m_isResizing = false;
}

void VXTabBarControl::changeEvent(QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::FontChange || type == QEvent::StyleChange || type == QEvent::LayoutDirectionChange) {
        m_slots = {};
        foldTo(m_isTabBarHidden ? 0 : 1);
        update(false);
    } else if (type == QEvent::ActivationChange || type == QEvent::PaletteChange) {
        QWidget::update();
    }
    QWidget::changeEvent(event);
}

void VXTabBarControl::keyPressEvent(QKeyEvent *event)
{
    if (m_mouse->isDragging()) {
        if (event->key() == Qt::Key_Escape)
            m_mouse->cancelDrag();
        return;
    }
    const bool mirrored = m_orientation == Qt::Horizontal && layoutDirection() == Qt::RightToLeft;
    const uint last = countOfTabItems() - 1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        selectNeighbour(mirrored ? 1 : -1);
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        selectNeighbour(mirrored ? -1 : 1);
        break;
    case Qt::Key_Home:
        selectTabItemAtIndex(0);
        break;
    case Qt::Key_End:
        selectTabItemAtIndex(last);
        break;
    case Qt::Key_Delete:
        if (const PSMTabBarCell *cell = cellForTabItem(selectedTabItem());
            cell && !cell->isCloseButtonSuppressed())
            closeTabItem(cell->representedObject());
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void VXTabBarControl::contextMenuEvent(QContextMenuEvent *event)
{
    const PSMTabBarCell *cell = event->reason() == QContextMenuEvent::Keyboard
        ? cellForTabItem(selectedTabItem())
        : cellAtPoint(event->pos());
    QMenu *menu = cell ? m_delegate.menu(cell->representedObject()) : nullptr;
    if (!menu) {
        event->ignore();
        return;
    }
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    menu->popup(byKey ? mapToGlobal(cell->frame().bottomLeft().toPoint()) : event->globalPos());
}

void VXTabBarControl::mousePressEvent(QMouseEvent *event)
{
    m_mouse->press(*event);
}

void VXTabBarControl::mouseMoveEvent(QMouseEvent *event)
{
    m_mouse->move(*event);
}

void VXTabBarControl::mouseReleaseEvent(QMouseEvent *event)
{
    m_mouse->release(*event);
}

void VXTabBarControl::enterEvent(QEnterEvent *event)
{
    QWidget::enterEvent(event);
    m_mouse->followPointer();
}

void VXTabBarControl::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    m_mouse->leave();
    update(); // places that waited for the pointer to go may change now
}

bool VXTabBarControl::showToolTip(const QPoint &point)
{
    const PSMTabBarCell *cell = cellAtPoint(point);
    if (!cell)
        return false;
    QString text = m_delegate.toolTip(cell->representedObject());
    if (cell->is(PSMTabBarCell::CloseHovered))
        text = tr("Close this tab");
    else if (text.isEmpty() && m_style->desiredWidthOfTabCell(*cell, font(), 0) > cell->frame().width())
        text = cell->displayTitle(); // the bar shows only a part of it
    if (text.isEmpty())
        return false;
    QToolTip::showText(mapToGlobal(point), plainToolTip(text), this, cell->frame().toRect());
    return true;
}

// --- the overflow menu

void VXTabBarControl::menuNeedsUpdate(QMenu *menu)
{
    if (menu != m_overflowButton->menu()) {
        qWarning("Warning: Unexpected menu delegate call for menu %s",
                 menu ? qUtf8Printable(menu->title()) : "(null)");
        return;
    }
    menu->clear();
    menu->setMinimumWidth(0);
    for (PSMTabBarCell *cell : std::as_const(m_cells)) {
        if (cell->isInOverflowMenu())
            addOverflowEntry(menu, cell);
    }
    addOverflowSearch(menu);
}

/// A field at the top of a long menu: what is typed in it is what titles have to contain. The menu shows the
/// first of them and says how many more there are.
void VXTabBarControl::addOverflowSearch(QMenu *menu)
{
    const QList<QAction *> entries = menu->actions();
    if (entries.size() <= kLongestPlainMenu)
        return;
    auto *field = new QLineEdit;
    field->setPlaceholderText(tr("Search"));
    field->setAccessibleName(tr("Search tabs"));
    field->setClearButtonEnabled(true);
    auto *entry = new QWidgetAction(menu);
    entry->setDefaultWidget(field);
    menu->insertAction(entries.first(), entry);
    menu->setActiveAction(entry);
    connect(
        menu, &QMenu::aboutToShow, field, [field] { field->setFocus(); }, Qt::QueuedConnection);
    field->setFocus();
    QAction *more = menu->addAction(QString());
    more->setEnabled(false);
    // No more than stand below each other: a menu that scrolls cannot be narrowed down.
    const auto show = [entries, more](const QString &text) {
        qsizetype matching = 0;
        for (QAction *other : entries) {
            const bool matches =
                QString(other->text()).replace(u"&&"_s, u"&"_s).contains(text, Qt::CaseInsensitive);
            other->setVisible(matches && ++matching <= kLongestPlainMenu);
        }
        more->setText(tr("%1 more").arg(matching - kLongestPlainMenu));
        more->setVisible(matching > kLongestPlainMenu);
    };
    show({});
    connect(field, &QLineEdit::textChanged, menu, [show, menu](const QString &text) {
        menu->setMinimumWidth(menu->width());
        show(text);
    });
    connect(field, &QLineEdit::returnPressed, menu, [entries, menu] {
        for (QAction *other : entries) {
            if (!other->isVisible() || !other->isEnabled())
                continue;
            menu->close();
            other->trigger();
            return;
        }
    });
}

void VXTabBarControl::addOverflowEntry(QMenu *menu, PSMTabBarCell *cell)
{
    QAction *entry = menu->addAction(cell->icon(), plainMenuTitle(cell->displayTitle()));
    entry->setCheckable(cell->is(PSMTabBarCell::Selected)); // the others would show empty boxes
    entry->setChecked(cell->is(PSMTabBarCell::Selected));
    const QPointer<QObject> item = cell->representedObject();
    connect(entry, &QAction::triggered, this, [this, item] { selectTabItem(item); });
    entry->setEnabled(m_delegate.validates(entry, item));
}

// --- a title that is being typed

void VXTabBarControl::editTitleOfTabItem(QObject *item)
{
    PSMTabBarCell *cell = cellForTabItem(item);
    if (!cell)
        return;
    selectTabItem(item);
    delete m_titleField;
    auto *field = new QLineEdit(cell->title(), this);
    m_titleField = field;
    m_titledItem = item;
    field->setAccessibleName(tr("Title of the tab"));
    field->setAlignment(Qt::AlignCenter);
    field->selectAll();
    const auto end = [this, field](bool takes) {
        if (m_titleField != field)
            return; // ended already: hiding takes the focus away
        m_titleField = nullptr;
        const QString title = field->text().trimmed();
        field->hide();
        field->deleteLater();
        if (takes && m_titledItem && !title.isEmpty())
            Q_EMIT titleEdited(m_titledItem, title);
    };
    connect(field, &QLineEdit::editingFinished, this, [end] { end(true); });
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), field, nullptr, nullptr, Qt::WidgetShortcut);
    connect(escape, &QShortcut::activated, this, [end] { end(false); });
    placeTitleField();
    field->show();
    field->setFocus(Qt::OtherFocusReason);
}

void VXTabBarControl::placeTitleField()
{
    const PSMTabBarCell *cell = m_titleField ? cellForTabItem(m_titledItem) : nullptr;
    if (cell && !cell->isInOverflowMenu())
        m_titleField->setGeometry(cell->targetFrame().toRect().adjusted(2, 2, -2, -2));
}

void VXTabBarControl::wheelEvent(QWheelEvent *event)
{
    constexpr int kNotch = 120;
    const QPoint delta = event->angleDelta();
    m_wheelDelta += std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
    for (; std::abs(m_wheelDelta) >= kNotch; m_wheelDelta -= m_wheelDelta > 0 ? kNotch : -kNotch) {
        const int to = int(m_selectionIndex) + (m_wheelDelta > 0 ? -1 : 1);
        if (m_selectionIndex != NotFound && to >= 0 && to < int(countOfTabItems()))
            selectTabItemAtIndex(uint(to)); // not around the ends: nobody sees a wheel's jump coming
    }
    event->accept();
}

// --- tabs of other bars

std::unique_ptr<QMimeData> VXTabBarControl::mimeDataForTabItem(QObject *item)
{
    return std::make_unique<TabMimeData>(this, item);
}

bool VXTabBarControl::acceptDroppedTab(const QMimeData &dragged, const QPointF &point)
{
    const auto *tab = dynamic_cast<const TabMimeData *>(&dragged);
    if (!tab || !tab->source() || tab->source() == this || !tab->item())
        return false;
    const PSMTabBarCell *cell = cellAtPoint(point);
    const uint index = cell ? indexOfTabItem(cell->representedObject()) : countOfTabItems();
    VXTabBarControl *source = tab->source();
    const uint sourceIndex = source->indexOfTabItem(tab->item());
    if (sourceIndex == NotFound)
        return false;
    const bool wasSelected = sourceIndex == source->selectionIndex();
    source->removeTabItem(tab->item());
    if (wasSelected && source->countOfTabItems() > 0)
        source->selectTabItemAtIndex(std::min(sourceIndex, source->countOfTabItems() - 1));
    insertTabItemAtIndex(tab->item(), index);
    selectTabItem(tab->item());
    return true;
}

// --- settings that take more than laying out

void VXTabBarControl::setOrientation(Qt::Orientation orientation)
{
    if (orientation == m_orientation)
        return;
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    m_orientation = orientation;
    const bool horizontal = orientation == Qt::Horizontal;
    setSizePolicy(horizontal ? QSizePolicy::Expanding : QSizePolicy::Fixed,
                  horizontal ? QSizePolicy::Fixed : QSizePolicy::Expanding);
    foldTo(m_isTabBarHidden ? 0 : 1);
    update(false);
}

void VXTabBarControl::setTabStyle(std::unique_ptr<PSMTabStyle> style)
{
    Q_ASSERT(style);
    m_style = std::move(style);
    m_slots = {};
    if (m_orientation == Qt::Horizontal && !m_isTabBarHidden)
        applyThickness(fullThickness());
    update();
}

void VXTabBarControl::setStyleNamed(const QString &name)
{
    if (std::unique_ptr<PSMTabStyle> style = runebook::tabStyleNamed(name))
        setTabStyle(std::move(style));
}

void VXTabBarControl::setDelegate(QObject *delegate)
{
    m_delegate.setObject(delegate);
    update();
}
