#include "tabbar/VXTabBarControl.h"

#include "tabbar/DraggedTab.h"
#include "tabbar/PSMOverflowPopUpButton.h"
#include "tabbar/PSMYosemiteStyle.h"
#include "tabbar/TabArchive.h"
#include "tabbar/TabArrangement.h"
#include "tabbar/TabBarAccessible.h"
#include "tabbar/TabBarButton.h"
#include "tabbar/TabBarFolding.h"
#include "tabbar/TabBarKeys.h"
#include "tabbar/TabBarMouse.h"
#include "tabbar/TabOverflowMenu.h"
#include "tabbar/TabResizeHandle.h"
#include "tabbar/TabStyles.h"
#include "tabbar/TabTitleEditor.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QStyle>
#include <QToolTip>
#include <QWheelEvent>
#include <cmath>

using namespace Qt::StringLiterals;
using runebook::TabArrangement;
using runebook::TabBarFolding;

VXTabBarControl::VXTabBarControl(QWidget *parent)
    : QWidget(parent),
      m_style(std::make_unique<PSMYosemiteStyle>()),
      m_delegate(QGenericArgument("VXTabBarControl*", &m_self))
{
    m_cells.reserve(10);
    m_tabItems.reserve(10);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    runebook::installTabBarAccessibility(); // in front of the name, which asks for an interface and keeps it
    setAccessibleName(tr("Tabs"));
    makeParts();
    m_folding->refresh();
}

void VXTabBarControl::makeParts()
{
    TabStrip &strip = *this;
    m_mouse = std::make_unique<runebook::TabBarMouse>(strip);
    m_keys = std::make_unique<runebook::TabBarKeys>(strip);
    m_arrangement = new TabArrangement(strip);
    connect(m_arrangement, &TabArrangement::arrived, this, [this] { m_mouse->followPointer(); });
    connect(m_arrangement, &TabArrangement::overflowChanged, this,
            [this](QObject *item, bool overflow) { m_delegate.isInOverflowMenu(item, overflow); });
    m_folding = new TabBarFolding(this);
    connect(m_folding, &TabBarFolding::hidden, this, [this] { m_delegate.didHide(); });
    m_titleEditor = new runebook::TabTitleEditor(strip);
    connect(m_titleEditor, &runebook::TabTitleEditor::edited, this, &VXTabBarControl::titleEdited);
    m_overflowButton = new PSMOverflowPopUpButton(this);
    QMenu *menu = m_overflowButton->menu();
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { menuNeedsUpdate(menu); });
    m_addTabButton = new runebook::AddTabButton(this);
    connect(m_addTabButton, &QToolButton::clicked, this, &VXTabBarControl::addTabRequested);
    m_addTabButton->hide();
    m_resizeHandle = new runebook::TabResizeHandle(strip);
}

VXTabBarControl::~VXTabBarControl()
{
    // Items may go during the destruction of the parent: nobody is left to hear of it.
    for (QObject *item : std::as_const(m_tabItems))
        item->disconnect(this);
}

// --- items

QObject *VXTabBarControl::tabItemAtIndex(uint index) const
{
    return index < countOfTabItems() ? m_tabItems.at(index) : nullptr;
}

uint VXTabBarControl::indexOfTabItem(const QObject *item) const
{
    const qsizetype index = m_tabItems.indexOf(item);
    return index < 0 ? NotFound : uint(index);
}

PSMTabBarCell *VXTabBarControl::cellForTabItem(const QObject *item) const
{
    return m_cells.value(m_tabItems.indexOf(item));
}

void VXTabBarControl::addTabItem(QObject *item)
{
    insertTabItemAtIndex(item, countOfTabItems());
}

void VXTabBarControl::insertTabItemAtIndex(QObject *item, uint index)
{
    if (!item || indexOfTabItem(item) != NotFound)
        return;
    m_content.resizeViewOf(item);
    insertCell(item, std::min(index, countOfTabItems()));
    update();
    postNotification(u"TabDidOpenNotification"_s, item);
}

void VXTabBarControl::insertCell(QObject *item, qsizetype index)
{
    auto *cell = new PSMTabBarCell(item, this);
    connect(cell, &PSMTabBarCell::contentChanged, this, qOverload<>(&VXTabBarControl::update));
    connect(item, &QObject::destroyed, this, &VXTabBarControl::itemDestroyed);
    m_tabItems.insert(index, item);
    m_cells.insert(index, cell);
    if (m_selectionIndex != NotFound && m_selectionIndex >= index)
        setSelectionIndex(m_selectionIndex + 1);
}

void VXTabBarControl::itemDestroyed(QObject *item)
{
    // A half destroyed item has no view any more to be taken out of the content view.
    removeTabItem(item);
}

void VXTabBarControl::removeTabItem(QObject *item)
{
    const uint index = indexOfTabItem(item);
    if (index == NotFound)
        return;
    const bool wasSelected = index == m_selectionIndex;
    item->disconnect(this);
    m_tabItems.removeAt(index);
    delete m_cells.takeAt(index);
    m_arrangement->noteRemoved();
    if (m_previousItem == item)
        m_previousItem = nullptr;
    if (wasSelected) {
        setSelectionIndex(NotFound);
        showSelectedView();
    } else if (m_selectionIndex != NotFound && m_selectionIndex > index) {
        setSelectionIndex(m_selectionIndex - 1);
    }
    update();
}

void VXTabBarControl::closeTabItem(QObject *item)
{
    const QPointer<QObject> guard(item);
    if (indexOfTabItem(item) == NotFound || (countOfTabItems() == 1 && !m_canCloseOnlyTab))
        return;
    if (!m_delegate.shouldClose(item))
        return;
    m_delegate.willClose(item);
    postNotification(u"TabWillCloseNotification"_s, item);
    // Delegate and observers may have closed, moved or deleted anything.
    const uint index = guard ? indexOfTabItem(item) : NotFound;
    if (index == NotFound)
        return;
    const runebook::TabContent::FocusKeeper keeper(m_content);
    const bool wasSelected = index == m_selectionIndex;
    const uint fallback = runebook::indexAfterClosing(m_selectionIndex, index);
    removeTabItem(item);
    m_delegate.didClose(item);
    if (!wasSelected || m_selectionIndex != NotFound)
        return;
    if (indexOfTabItem(m_previousItem) != NotFound)
        selectTabItem(m_previousItem);
    else
        selectTabItemAtIndex(fallback);
}

void VXTabBarControl::moveTabItemToIndex(QObject *item, uint index)
{
    const uint from = indexOfTabItem(item);
    if (from == NotFound)
        return;
    const uint to = std::min(index, countOfTabItems() - 1);
    const QObject *selected = selectedTabItem();
    m_tabItems.move(from, to);
    m_cells.move(from, to);
    // A fitted tab takes its width along, also while widths stay as they are under the pointer.
    m_arrangement->noteMoved(from, to);
    setSelectionIndex(indexOfTabItem(selected));
    update();
}

void VXTabBarControl::setViewControllers(const QList<QObject *> &items)
{
    const QPointer<QObject> selected = selectedTabItem();
    setDisableUpdates(true);
    for (QObject *item : tabItems()) {
        if (!items.contains(item))
            removeTabItem(item);
    }
    for (QObject *item : items)
        addTabItem(item);
    uint index = 0;
    for (QObject *item : items)
        moveTabItemToIndex(item, index++);
    setDisableUpdates(false);
}

// --- selection

void VXTabBarControl::setSelectionIndex(uint index)
{
    m_selectionIndex = index;
    for (uint cell = 0; cell < countOfTabItems(); ++cell)
        m_cells.at(cell)->setState(PSMTabBarCell::Selected, cell == index);
}

void VXTabBarControl::selectTabItem(QObject *item)
{
    if (indexOfTabItem(item) == NotFound || item == selectedTabItem())
        return;
    if (QObject *losing = selectedTabItem())
        m_delegate.willUnselect(losing);
    const uint index = indexOfTabItem(item);
    if (index == NotFound)
        return; // closed by the delegate meanwhile
    const runebook::TabContent::FocusKeeper keeper(m_content);
    m_previousItem = selectedTabItem();
    setSelectionIndex(index);
    showSelectedView();
    update();
    QAccessibleEvent focused(m_cells.at(index), QAccessible::Selection);
    QAccessible::updateAccessibility(&focused);
    m_delegate.didSelect(item);
    Q_EMIT selectionChanged(index);
    Q_EMIT restorableStateChanged();
}

void VXTabBarControl::selectTabItemAtIndex(uint index)
{
    selectTabItem(tabItemAtIndex(index));
}

void VXTabBarControl::showSelectedView()
{
    m_content.show(selectedTabItem());
}

void VXTabBarControl::setContentView(QWidget *view)
{
    m_content.setView(view);
    showSelectedView();
    update();
}

// --- notifications

void VXTabBarControl::postNotification(const QString &name, QObject *item)
{
    m_notifications.post(name, item, [&] { Q_EMIT notificationPosted(name, item); });
}

// --- layout

void VXTabBarControl::update()
{
    update(m_automaticallyAnimates);
}

void VXTabBarControl::update(bool animate)
{
    if (m_disabledUpdates > 0)
        return;
    refreshCloseButtons();
    const bool hide = m_hideRequested || (m_hideForSingleTab && m_cells.size() <= 1);
    m_folding->setHidden(hide,
                         animate && mayAnimate() ? TabBarFolding::Way::Animated : TabBarFolding::Way::AtOnce);
    layoutCells(animate && mayAnimate());
    QWidget::update();
}

void VXTabBarControl::setDisableUpdates(bool disable)
{
    m_disabledUpdates = std::max(0, m_disabledUpdates + (disable ? 1 : -1));
    update();
}

bool VXTabBarControl::mayAnimate() const
{
    return isVisible() && !m_isResizing
        && QWidget::style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
}

void VXTabBarControl::hideTabBarAnimate(bool hide, bool animate)
{
    m_hideRequested = hide;
    update(animate);
}

int VXTabBarControl::fullThickness() const
{
    return int(m_style->tabCellHeight(font()));
}

bool VXTabBarControl::isTabBarHidden() const
{
    return m_folding->isHidden();
}

QWidget *VXTabBarControl::partnerView() const
{
    return m_folding->partner();
}

void VXTabBarControl::setPartnerView(QWidget *view)
{
    m_folding->setPartner(view);
    update();
}

void VXTabBarControl::moveQuietly(QObject *item, uint index)
{
    ++m_disabledUpdates;
    moveTabItemToIndex(item, index);
    --m_disabledUpdates;
}

void VXTabBarControl::resizeByHandle(int delta)
{
    if (m_orientation == Qt::Horizontal)
        resize(std::max(minimumSizeHint().width(), width() + delta), height());
    else
        m_folding->setThickness(m_sideWidth = std::max(minimumSizeHint().width(), width() + delta));
    updateGeometry();
}

QSize VXTabBarControl::sizeHint() const
{
    if (m_orientation == Qt::Horizontal)
        return {int(m_widthRules.cellOptimumWidth * std::max<qsizetype>(1, m_cells.size())), fullThickness()};
    return {m_sideWidth > 0 ? m_sideWidth : m_widthRules.cellOptimumWidth,
            int(fullThickness() * std::max<qsizetype>(1, m_cells.size()))};
}

QSize VXTabBarControl::minimumSizeHint() const
{
    if (isTabBarHidden())
        return {0, 0};
    return m_orientation == Qt::Horizontal ? QSize(m_widthRules.cellMinWidth, fullThickness())
                                           : QSize(m_widthRules.cellMinWidth / 2, fullThickness());
}

// --- cells

void VXTabBarControl::refreshCloseButtons()
{
    const bool isOnlyTab = m_cells.size() == 1 && !m_canCloseOnlyTab;
    for (PSMTabBarCell *cell : std::as_const(m_cells))
        cell->setIsCloseButtonSuppressed(
            isOnlyTab || m_disableTabClose || m_delegate.disablesClose(cell->representedObject())
            || (!m_allowsBackgroundTabClosing && !cell->is(PSMTabBarCell::Selected)));
}

runebook::TabBarMeasures VXTabBarControl::measures() const
{
    return {m_style.get(),
            font(),
            m_orientation,
            layoutDirection(),
            size(),
            m_showAddTabButton,
            m_resizeAreaCompensation,
            m_widthRules};
}

void VXTabBarControl::layoutCells(bool animate)
{
    const qsizetype kept =
        m_alwaysShowActiveTab && m_selectionIndex != NotFound ? qsizetype(m_selectionIndex) : -1;
    m_arrangement->layOut(measures(), kept,
                          animate ? TabArrangement::Way::Slide : TabArrangement::Way::AtOnce);
    placeButtons();
    m_titleEditor->followTab();
}

QList<int> VXTabBarControl::shownCells() const
{
    return m_arrangement->shown();
}

void VXTabBarControl::placeButtons()
{
    const bool horizontal = m_orientation == Qt::Horizontal;
    const int extent = int(PSMTabStyle::kButtonExtent);
    const int length = (horizontal ? width() : height()) - m_resizeAreaCompensation;
    const auto put = [this, horizontal, extent](QWidget *button, int start) {
        const QRect logical =
            horizontal ? QRect(start, 0, extent, fullThickness()) : QRect(0, start, width(), extent);
        button->setGeometry(QStyle::visualRect(layoutDirection(), rect(), logical));
    };
    const QList<int> &shown = m_arrangement->shown();
    const qsizetype hidden = m_cells.size() - shown.size();
    const bool holdsSelection = m_selectionIndex != NotFound && !shown.contains(int(m_selectionIndex));
    m_overflowButton->setContent(hidden, holdsSelection);
    put(m_overflowButton, length - extent);
    m_overflowButton->setVisible(hidden > 0 && useOverflowMenu() && !isTabBarHidden());
    const runebook::TabPlaces &places = m_arrangement->places();
    const int end = int(std::round(places.end(measures(), shown.size())));
    put(m_addTabButton, std::min(end, length - (places.overflow() ? 2 : 1) * extent));
    m_addTabButton->setVisible(m_showAddTabButton && !isTabBarHidden());
    const int handle = std::max(m_resizeAreaCompensation, runebook::TabResizeHandle::kSmallestWidth);
    m_resizeHandle->setGeometry(
        QStyle::visualRect(layoutDirection(), rect(), QRect(width() - handle, 0, handle, height())));
    m_resizeHandle->setVisible(m_allowsResizing && !isTabBarHidden());
}

PSMTabBarCell *VXTabBarControl::cellAtPoint(const QPointF &point) const
{
    return m_arrangement->cellAtPoint(point);
}

// --- drawing

PSMTabBarState VXTabBarControl::barState() const
{
    return {palette(),        font(),     m_orientation,      layoutDirection(),
            isActiveWindow(), hasFocus(), devicePixelRatioF()};
}

void VXTabBarControl::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const PSMTabBarState state = barState();
    m_style->drawBar(painter, rect(), state);
    const PSMTabBarCell *held = nullptr;
    for (const int index : m_arrangement->shown()) {
        const PSMTabBarCell *cell = m_cells.at(index);
        if (cell->is(PSMTabBarCell::Held))
            held = cell;
        else
            m_style->drawCell(painter, *cell, state);
    }
    if (held && !held->is(PSMTabBarCell::TornOff))
        m_style->drawCell(painter, *held, state);
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
        m_arrangement->forgetPlaces();
        m_folding->refresh();
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
    if (!m_keys->press(*event))
        QWidget::keyPressEvent(event);
}

void VXTabBarControl::wheelEvent(QWheelEvent *event)
{
    m_keys->turn(*event);
    event->accept();
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
    // As it is, whatever markup it looks like.
    const QString plain = u"<p style='white-space:pre-wrap'>"_s + text.toHtmlEscaped() + u"</p>"_s;
    QToolTip::showText(mapToGlobal(point), plain, this, cell->frame().toRect());
    return true;
}

// --- the overflow menu and titles

void VXTabBarControl::menuNeedsUpdate(QMenu *menu)
{
    if (menu != m_overflowButton->menu()) {
        qWarning("Warning: Unexpected menu delegate call for menu %s",
                 menu ? qUtf8Printable(menu->title()) : "(null)");
        return;
    }
    fillOverflowMenu(*menu, *this, m_delegate);
}

void VXTabBarControl::editTitleOfTabItem(QObject *item)
{
    m_titleEditor->edit(item);
}

// --- tabs of other bars

std::unique_ptr<QMimeData> VXTabBarControl::mimeDataForTabItem(QObject *item)
{
    return std::make_unique<runebook::DraggedTab>(this, item);
}

bool VXTabBarControl::acceptDroppedTab(const QMimeData &dragged, const QPointF &point)
{
    const auto *tab = dynamic_cast<const runebook::DraggedTab *>(&dragged);
    auto *source = tab ? qobject_cast<VXTabBarControl *>(tab->bar()) : nullptr;
    if (!source || source == this || !tab->item())
        return false;
    const PSMTabBarCell *cell = cellAtPoint(point);
    const uint index = cell ? indexOfTabItem(cell->representedObject()) : countOfTabItems();
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
    m_folding->setOrientation(orientation);
    const bool horizontal = orientation == Qt::Horizontal;
    setSizePolicy(horizontal ? QSizePolicy::Expanding : QSizePolicy::Fixed,
                  horizontal ? QSizePolicy::Fixed : QSizePolicy::Expanding);
    m_folding->refresh();
    update(false);
}

void VXTabBarControl::setTabStyle(std::unique_ptr<PSMTabStyle> style)
{
    Q_ASSERT(style);
    m_style = std::move(style);
    m_arrangement->forgetPlaces();
    if (m_orientation == Qt::Horizontal && !isTabBarHidden())
        m_folding->refresh();
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

// --- archive

QStringList VXTabBarControl::archiveKeys()
{
    return runebook::TabArchive::keys();
}

QVariantMap VXTabBarControl::archive() const
{
    return runebook::TabArchive::archived(*this, m_cells,
                                          {m_overflowButton->isHidden(), m_isAwake, m_mouse->lastPress()});
}

void VXTabBarControl::restoreFromArchive(const QVariantMap &archive)
{
    setDisableUpdates(true);
    runebook::TabArchive::restore(*this, archive);
    setDisableUpdates(false);
    if (const std::optional<bool> isHidden = runebook::TabArchive::isHidden(archive))
        hideTabBarAnimate(*isHidden, false);
}
