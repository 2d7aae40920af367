// The layout of the bar: where cells and buttons stand, how they get there, and how the bar folds away.
#include "tabbar/PSMOverflowPopUpButton.h"
#include "tabbar/TabBarMouse.h"
#include "tabbar/TabResizeHandle.h"
#include "tabbar/VXTabBarControl.h"

#include <QCursor>
#include <QLayout>
#include <QPainter>
#include <QStyle>
#include <QToolButton>
#include <cmath>

namespace {

constexpr int kSlideMs = 160;
constexpr int kFoldMs = 200;

} // namespace

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
    if (hide != m_isTabBarHidden) {
        m_isTabBarHidden = hide;
        m_fold.stop();
        m_fold.setStartValue(hide ? 1.0 : 0.0);
        m_fold.setEndValue(hide ? 0.0 : 1.0);
        m_fold.setDuration(kFoldMs);
        if (animate && mayAnimate())
            m_fold.start();
        else
            finishFolding();
    }
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

// --- folding

void VXTabBarControl::hideTabBarAnimate(bool hide, bool animate)
{
    m_hideRequested = hide;
    update(animate);
}

int VXTabBarControl::fullThickness() const
{
    return int(m_style->tabCellHeight(font()));
}

void VXTabBarControl::foldTo(qreal shownPart)
{
    const int full = m_orientation == Qt::Horizontal ? fullThickness() : sizeHint().width();
    applyThickness(int(std::round(full * shownPart)));
}

void VXTabBarControl::finishFolding()
{
    foldTo(m_isTabBarHidden ? 0 : 1);
    if (m_isTabBarHidden)
        m_delegate.didHide();
}

void VXTabBarControl::applyThickness(int thickness)
{
    const QRect before = geometry();
    if (m_orientation == Qt::Horizontal) {
        setMinimumWidth(0);
        setMaximumWidth(QWIDGETSIZE_MAX);
        setFixedHeight(thickness);
    } else {
        setMinimumHeight(0);
        setMaximumHeight(QWIDGETSIZE_MAX);
        setFixedWidth(thickness);
    }
    const bool inLayout = parentWidget() && parentWidget()->layout();
    if (!m_partnerView || m_partnerView->parentWidget() != parentWidget() || inLayout)
        return;
    // The partner gives and takes at the edge it shares with the bar; the opposite edge stays.
    QRect partner = m_partnerView->geometry();
    const QSize change = size() - before.size();
    if (m_orientation == Qt::Horizontal)
        partner.setTop(partner.top() + change.height());
    else
        partner.setLeft(partner.left() + change.width());
    m_partnerView->setGeometry(partner);
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
        applyThickness(m_sideWidth = std::max(minimumSizeHint().width(), width() + delta));
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
    if (m_isTabBarHidden)
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

void VXTabBarControl::layoutCells(bool animate)
{
    // While the pointer is over the tabs the places stay, so that closing several in a row brings the next
    // close button under it. Another bar, other rules or more tabs than places are no such case.
    const bool samePlaces = m_slots.barSize == size() && m_slots.rules == m_widthRules
        && m_slots.withAddButton == m_showAddTabButton && !m_slots.extents.isEmpty()
        && (m_slots.overflows || m_cells.size() <= m_slots.extents.size());
    if (!samePlaces || !pointerIsOverTabs())
        computeSlots();
    placeCells(animate);
    placeButtons();
    placeTitleField();
}

bool VXTabBarControl::pointerIsOverTabs() const
{
    return isVisible() && rect().adjusted(10, 2, -10, -2).contains(mapFromGlobal(QCursor::pos()));
}

qreal VXTabBarControl::availableWidth(bool withOverflowButton) const
{
    const qreal before = m_style->leftMargin();
    const qreal after = m_style->rightMargin(m_showAddTabButton, withOverflowButton);
    const qreal length = m_orientation == Qt::Horizontal ? width() : height();
    return length - before - after - m_resizeAreaCompensation;
}

QList<qreal> VXTabBarControl::slotExtents(bool withOverflowButton) const
{
    const qreal available = availableWidth(withOverflowButton);
    if (m_orientation == Qt::Vertical) {
        const qreal cellHeight = fullThickness();
        return QList<qreal>(
            runebook::verticalTabCount(m_cells.size(), available, cellHeight, useOverflowMenu()), cellHeight);
    }
    QList<qreal> desired(m_cells.size(), 0);
    if (sizeCellsToFit() || useFullWidth())
        std::ranges::transform(m_cells, desired.begin(), [this](const PSMTabBarCell *cell) {
            return m_style->desiredWidthOfTabCell(*cell, font(), cellMinWidth());
        });
    return runebook::tabWidths(desired, available, m_widthRules);
}

void VXTabBarControl::computeSlots()
{
    m_slots = {slotExtents(false), m_widthRules, size(), m_showAddTabButton, false};
    if (m_slots.extents.size() < m_cells.size()) {
        m_slots.extents = slotExtents(true);
        m_slots.overflows = true;
    }
}

QList<QRectF> VXTabBarControl::slotFrames(const QList<int> &shown) const
{
    QList<QRectF> frames;
    frames.reserve(shown.size());
    qreal position = m_style->leftMargin();
    for (qsizetype slot = 0; slot < shown.size(); ++slot) {
        const qreal extent = m_slots.extents.at(slot);
        const qreal start = std::round(position);
        const qreal length = std::round(position + extent) - start;
        position += extent;
        if (m_orientation == Qt::Vertical)
            frames.append(QRectF(0, start, width(), length));
        else if (layoutDirection() == Qt::RightToLeft)
            frames.append(QRectF(width() - start - length, 0, length, fullThickness()));
        else
            frames.append(QRectF(start, 0, length, fullThickness()));
    }
    return frames;
}

void VXTabBarControl::placeCells(bool animate)
{
    const qsizetype kept =
        m_alwaysShowActiveTab && m_selectionIndex != NotFound ? qsizetype(m_selectionIndex) : -1;
    m_shown = runebook::shownTabs(m_slots.extents.size(), m_cells.size(), kept);
    const QList<QRectF> frames = slotFrames(m_shown);
    QList<bool> hidden(m_cells.size(), true);
    for (qsizetype slot = 0; slot < m_shown.size(); ++slot) {
        PSMTabBarCell *cell = m_cells.at(m_shown.at(slot));
        hidden[m_shown.at(slot)] = false;
        if (cell->frame().isEmpty() || cell->isInOverflowMenu())
            cell->setFrame(frames.at(slot)); // a new tab appears where it belongs
        cell->setTargetFrame(frames.at(slot));
    }
    QList<PSMTabBarCell *> changed;
    for (qsizetype index = 0; index < m_cells.size(); ++index) {
        if (m_cells.at(index)->isInOverflowMenu() == hidden.at(index))
            continue;
        m_cells.at(index)->setIsInOverflowMenu(hidden.at(index));
        changed.append(m_cells.at(index));
    }
    slideCells(animate);
    tellOverflowChanges(changed);
}

void VXTabBarControl::slideCells(bool animate)
{
    const auto standsRight = [this](int index) {
        return m_cells.at(index)->is(PSMTabBarCell::Held)
            || m_cells.at(index)->frame() == m_cells.at(index)->targetFrame();
    };
    m_slide.stop();
    if (animate && !std::ranges::all_of(m_shown, standsRight)) {
        m_slide.setDuration(kSlideMs);
        m_slide.start();
        return;
    }
    for (const int index : std::as_const(m_shown))
        m_cells.at(index)->advance(1);
    m_mouse->followPointer();
}

void VXTabBarControl::tellOverflowChanges(const QList<PSMTabBarCell *> &changed)
{
    QList<std::pair<QPointer<QObject>, bool>> news;
    for (const PSMTabBarCell *cell : changed)
        news.emplaceBack(cell->representedObject(), cell->isInOverflowMenu());
    for (const auto &[item, overflow] : std::as_const(news)) {
        if (item)
            m_delegate.isInOverflowMenu(item, overflow);
    }
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
    const qsizetype hidden = m_cells.size() - m_shown.size();
    const bool holdsSelection = m_selectionIndex != NotFound && !m_shown.contains(int(m_selectionIndex));
    m_overflowButton->setContent(hidden, holdsSelection);
    put(m_overflowButton, length - extent);
    m_overflowButton->setVisible(hidden > 0 && useOverflowMenu() && !m_isTabBarHidden);
    qreal end = m_style->leftMargin();
    for (qsizetype slot = 0; slot < m_shown.size(); ++slot)
        end += m_slots.extents.at(slot);
    put(m_addTabButton, std::min(int(std::round(end)), length - (m_slots.overflows ? 2 : 1) * extent));
    m_addTabButton->setVisible(m_showAddTabButton && !m_isTabBarHidden);
    const int handle = std::max(m_resizeAreaCompensation, runebook::TabResizeHandle::kSmallestWidth);
    m_resizeHandle->setGeometry(
        QStyle::visualRect(layoutDirection(), rect(), QRect(width() - handle, 0, handle, height())));
    m_resizeHandle->setVisible(m_allowsResizing && !m_isTabBarHidden);
}

PSMTabBarCell *VXTabBarControl::cellAtPoint(const QPointF &point) const
{
    if (!rect().contains(point.toPoint()))
        return nullptr;
    for (const int index : m_shown) {
        if (m_cells.at(index)->frame().contains(point))
            return m_cells.at(index);
    }
    return nullptr;
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
    for (const int index : std::as_const(m_shown)) {
        const PSMTabBarCell *cell = m_cells.at(index);
        if (cell->is(PSMTabBarCell::Held))
            held = cell;
        else
            m_style->drawCell(painter, *cell, state);
    }
    if (held && !held->is(PSMTabBarCell::TornOff))
        m_style->drawCell(painter, *held, state);
}
