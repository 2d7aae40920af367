#include "tabbar/VXTabBarControl.h"

#include "tabbar/PSMOverflowPopUpButton.h"
#include "tabbar/PSMYosemiteStyle.h"
#include "tabbar/TabBarAccessible.h"
#include "tabbar/TabBarMouse.h"

#include <QAccessible>
#include <QApplication>
#include <QStackedLayout>

using namespace Qt::StringLiterals;

namespace {

/// Somebody who types in one tab's view goes on typing in the view that takes its place.
class ContentFocusKeeper
{
public:
    explicit ContentFocusKeeper(QWidget *content) : m_content(content), m_hadFocus(holdsFocus()) { }
    ~ContentFocusKeeper()
    {
        if (!m_hadFocus || !m_content || holdsFocus())
            return;
        const QWidgetList views = m_content->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        if (views.isEmpty())
            return;
        QWidget *last = views.first()->focusWidget();
        (last ? last : views.first())->setFocus();
    }
    Q_DISABLE_COPY_MOVE(ContentFocusKeeper)

private:
    bool holdsFocus() const
    {
        const QWidget *focus = QApplication::focusWidget();
        return m_content && focus && m_content->isAncestorOf(focus);
    }
    QPointer<QWidget> m_content;
    bool m_hadFocus;
};

QWidget *viewOf(const QObject *item)
{
    return item ? item->property("view").value<QWidget *>() : nullptr;
}

} // namespace

QString VXTabBarControl::itemPasteboardType()
{
    return u"VXTabBarControlItemPBType"_s;
}

VXTabBarControl::VXTabBarControl(QWidget *parent)
    : QWidget(parent),
      m_style(std::make_unique<PSMYosemiteStyle>()),
      m_delegate(QGenericArgument("VXTabBarControl*", &m_self)),
      m_mouse(std::make_unique<runebook::TabBarMouse>(static_cast<runebook::TabStrip &>(*this)))
{
    m_cells.reserve(10);
    m_tabItems.reserve(10);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    runebook::installTabBarAccessibility(); // in front of the name, which asks for an interface and keeps it
    setAccessibleName(tr("Tabs"));
    makeButtons();
    makeShortcuts();
    m_slide.setStartValue(0.0);
    m_slide.setEndValue(1.0);
    m_slide.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant &progress) {
        for (PSMTabBarCell *cell : std::as_const(m_cells))
            cell->advance(progress.toReal());
        QWidget::update();
    });
    connect(&m_slide, &QVariantAnimation::finished, this, [this] { m_mouse->followPointer(); });
    connect(&m_fold, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &part) { foldTo(part.toReal()); });
    connect(&m_fold, &QVariantAnimation::finished, this, &VXTabBarControl::finishFolding);
    applyThickness(fullThickness());
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
    if (QWidget *view = viewOf(item); view && m_contentView)
        view->resize(m_contentView->size());
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
    m_shown.clear(); // its indexes are out of step until the next layout
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
    const ContentFocusKeeper keeper(m_contentView);
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
    if (from < m_slots.extents.size() && to < m_slots.extents.size())
        m_slots.extents.move(from, to);
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
    const ContentFocusKeeper keeper(m_contentView);
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
    if (!m_contentView)
        return;
    QWidget *view = viewOf(selectedTabItem());
    const QWidgetList others = m_contentView->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *other : others) {
        if (other == view)
            continue;
        other->hide();
        other->setParent(nullptr);
    }
    if (!view)
        return;
    if (!m_contentView->layout())
        new QStackedLayout(m_contentView); // pins to all four edges, whatever size the view would like
    m_contentView->layout()->setContentsMargins(0, 0, 0, 0);
    m_contentView->layout()->addWidget(view);
    view->show();
}

void VXTabBarControl::setContentView(QWidget *view)
{
    m_contentView = view;
    showSelectedView();
    update();
}

// --- notifications

void VXTabBarControl::addObserver(QObject *context, Observer observer)
{
    m_observers.emplace_back(context, std::move(observer));
}

static VXTabBarControl::Observer &sharedObserver()
{
    static VXTabBarControl::Observer observer;
    return observer;
}

void VXTabBarControl::setSharedObserver(Observer observer)
{
    sharedObserver() = std::move(observer);
}

void VXTabBarControl::postNotification(const QString &name, QObject *item)
{
    const auto guarded = [&name](const auto &call) {
        try {
            call();
        } catch (const std::exception &exception) {
            qWarning("Exception on '%s': %s", qUtf8Printable(name), exception.what());
        } catch (...) {
            qWarning("Exception on '%s': %s", qUtf8Printable(name), "unknown");
        }
    };
    std::erase_if(m_observers, [](const auto &entry) { return !entry.first; });
    const auto observers = m_observers; // an observer may add others
    for (const auto &[context, observer] : observers) {
        if (context)
            guarded([&observer = observer, &name, item] { observer(name, item); });
    }
    guarded([this, &name, item] { Q_EMIT notificationPosted(name, item); });
    if (const Observer shared = sharedObserver())
        guarded([&shared, &name, item] { shared(name, item); });
}
