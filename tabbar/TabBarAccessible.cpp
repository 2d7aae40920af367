#include "tabbar/TabBarAccessible.h"

#include "tabbar/TabStrip.h"

#include <QAccessibleObject>
#include <QAccessibleWidget>
#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

QRect onScreen(TabStrip &bar, const QRectF &rect)
{
    return QRect(bar.widget().mapToGlobal(rect.topLeft().toPoint()), rect.size().toSize());
}

/// What tabs and close buttons have in common: they belong to a cell, and can be pressed.
class CellInterface : public QAccessibleObject, public QAccessibleActionInterface
{
public:
    using QAccessibleObject::QAccessibleObject;

    virtual PSMTabBarCell *cell() const = 0;
    TabStrip *bar() const { return qobject_cast<TabStrip *>(cell()->parent()); }

    QWindow *window() const override { return bar()->widget().window()->windowHandle(); }
    void *interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface *>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }
};

class CloseButtonInterface : public CellInterface
{
public:
    using CellInterface::CellInterface;

    PSMTabBarCell *cell() const override { return static_cast<PSMTabCloseButton *>(object())->cell(); }
    QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(cell()); }
    int childCount() const override { return 0; }
    QAccessibleInterface *child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Button; }
    QRect rect() const override
    {
        return onScreen(
            *bar(), bar()->tabStyle().closeButtonRect(cell()->frame(), bar()->widget().layoutDirection()));
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.invisible = cell()->isInOverflowMenu() || !bar()->widget().isVisible();
        return state;
    }
    QString text(QAccessible::Text type) const override
    {
        if (type != QAccessible::Name)
            return {};
        return QCoreApplication::translate("VXTabBarControl", "Close %1").arg(cell()->displayTitle());
    }
    void doAction(const QString &name) override
    {
        if (name == pressAction())
            bar()->closeTabItem(cell()->representedObject());
    }
};

class TabInterface : public CellInterface
{
public:
    using CellInterface::CellInterface;

    PSMTabBarCell *cell() const override { return static_cast<PSMTabBarCell *>(object()); }
    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(&bar()->widget());
    }
    int childCount() const override { return cell()->isCloseButtonSuppressed() ? 0 : 1; }
    QAccessibleInterface *child(int index) const override
    {
        return index == 0 && childCount() == 1 ? QAccessible::queryAccessibleInterface(cell()->closeButton())
                                               : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        return child && childCount() == 1 && child->object() == cell()->closeButton() ? 0 : -1;
    }
    QAccessible::Role role() const override { return QAccessible::PageTab; }
    QRect rect() const override { return onScreen(*bar(), cell()->frame()); }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.selectable = true;
        state.focusable = true;
        state.selected = cell()->is(PSMTabBarCell::Selected);
        state.focused = state.selected && bar()->widget().hasFocus();
        state.invisible = !bar()->widget().isVisible() || bar()->isTabBarHidden();
        state.offscreen = cell()->isInOverflowMenu();
        return state;
    }
    QString text(QAccessible::Text type) const override
    {
        return type == QAccessible::Name ? cell()->title() : QString();
    }
    void doAction(const QString &name) override
    {
        if (name == pressAction())
            bar()->selectTabItem(cell()->representedObject());
    }
};

/// The tabs come first, then the bar's buttons.
class TabBarInterface : public QAccessibleWidget
{
public:
    explicit TabBarInterface(QWidget *bar) : QAccessibleWidget(bar, QAccessible::PageTabList) { }

    int childCount() const override { return int(bar()->cells().size()) + QAccessibleWidget::childCount(); }
    QAccessibleInterface *child(int index) const override
    {
        const int tabs = int(bar()->cells().size());
        return index >= 0 && index < tabs ? QAccessible::queryAccessibleInterface(bar()->cells().at(index))
                                          : QAccessibleWidget::child(index - tabs);
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        auto *cell = child ? qobject_cast<PSMTabBarCell *>(child->object()) : nullptr;
        if (cell)
            return int(bar()->cells().indexOf(cell));
        const int index = QAccessibleWidget::indexOfChild(child);
        return index < 0 ? index : index + int(bar()->cells().size());
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        const QPoint point = widget()->mapFromGlobal(QPoint(x, y));
        PSMTabBarCell *cell = bar()->cellAtPoint(point);
        return cell ? QAccessible::queryAccessibleInterface(cell) : QAccessibleWidget::childAt(x, y);
    }
    QAccessibleInterface *focusChild() const override
    {
        PSMTabBarCell *cell = bar()->cellForTabItem(bar()->selectedTabItem());
        return widget()->hasFocus() && cell ? QAccessible::queryAccessibleInterface(cell)
                                            : QAccessibleWidget::focusChild();
    }

private:
    TabStrip *bar() const { return qobject_cast<TabStrip *>(widget()); }
};

QAccessibleInterface *makeInterface(const QString &, QObject *object)
{
    // Not by the class name that is asked for: a class derived from the bar is a bar as well.
    if (qobject_cast<TabStrip *>(object))
        return new TabBarInterface(static_cast<QWidget *>(object));
    if (qobject_cast<PSMTabBarCell *>(object))
        return new TabInterface(object);
    if (qobject_cast<PSMTabCloseButton *>(object))
        return new CloseButtonInterface(object);
    return nullptr;
}

} // namespace

void installTabBarAccessibility()
{
    QAccessible::installFactory(makeInterface); // the same function is installed only once
}

} // namespace runebook
