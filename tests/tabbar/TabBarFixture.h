#pragma once

#include "tabbar/VXTabBarControl.h"

#include <QLineEdit>
#include <QMenu>
#include <QVBoxLayout>

/// The smallest thing that can be a tab.
class Item : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(QWidget *view READ view CONSTANT)
public:
    explicit Item(const QString &title) : m_title(title), m_view(new QLineEdit(title)) { }
    ~Item() override { delete m_view; }
    QString title() const { return m_title; }
    void setTitle(const QString &title)
    {
        m_title = title;
        Q_EMIT titleChanged();
    }
    QWidget *view() const { return m_view; }
Q_SIGNALS:
    void titleChanged();

private:
    QString m_title;
    QPointer<QWidget> m_view;
};

/// Has every optional operation and writes down each call, except the ones that are asked at every layout.
class FullDelegate : public QObject
{
    Q_OBJECT
public:
    QStringList calls;
    bool allowsClosing = true;
    bool disablesClose = false;
    bool enablesMenuItems = true;
    QString toolTip;
    QMenu *menu = nullptr;

    Q_INVOKABLE bool tabBarShouldCloseTabItem(VXTabBarControl *, QObject *item)
    {
        note(QStringLiteral("should close"), item);
        return allowsClosing;
    }
    Q_INVOKABLE void tabBarWillCloseTabItem(VXTabBarControl *, QObject *item)
    {
        note(QStringLiteral("will close"), item);
    }
    Q_INVOKABLE void tabBarDidCloseTabItem(VXTabBarControl *, QObject *item)
    {
        note(QStringLiteral("did close"), item);
    }
    Q_INVOKABLE void tabBarWillUnselectTabItem(VXTabBarControl *, QObject *item)
    {
        note(QStringLiteral("will unselect"), item);
    }
    Q_INVOKABLE void tabBarDidSelectTabItem(VXTabBarControl *, QObject *item)
    {
        note(QStringLiteral("did select"), item);
    }
    Q_INVOKABLE bool tabBarDisableTabCloseForTabItem(VXTabBarControl *, QObject *) { return disablesClose; }
    Q_INVOKABLE QString tabBarToolTipForTabItem(VXTabBarControl *, QObject *) { return toolTip; }
    Q_INVOKABLE void tabBarTabItemIsInOverflowMenu(VXTabBarControl *, QObject *item, bool inMenu)
    {
        note(inMenu ? QStringLiteral("hidden") : QStringLiteral("shown"), item);
    }
    Q_INVOKABLE bool tabBarValidateOverflowMenuItemForTabItem(VXTabBarControl *, QAction *, QObject *)
    {
        return enablesMenuItems;
    }
    Q_INVOKABLE void tabBarDidHide(VXTabBarControl *) { calls.append(QStringLiteral("did hide")); }
    Q_INVOKABLE QMenu *tabViewMenuForTabItem(VXTabBarControl *, QObject *) { return menu; }

    QStringList takeCalls() { return std::exchange(calls, {}); }

private:
    void note(const QString &what, QObject *item)
    {
        calls.append(what + u' ' + item->property("title").toString());
    }
};

/// A window with a bar over its content view, as the macro panel has it.
struct Panel {
    explicit Panel(int count = 0, int width = 500)
    {
        window.resize(width, 200);
        auto *column = new QVBoxLayout(&window);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        column->addWidget(bar);
        column->addWidget(content, 1);
        column->activate();
        bar->setContentView(content);
        bar->setDelegate(&delegate);
        for (int index = 0; index < count; ++index)
            bar->addTabItem(makeItem(QString(QChar(u'A' + index))));
        bar->selectTabItemAtIndex(0);
        delegate.calls.clear();
    }
    ~Panel()
    {
        delete bar;
        qDeleteAll(items);
    }
    Q_DISABLE_COPY_MOVE(Panel)

    Item *makeItem(const QString &title)
    {
        items.append(new Item(title));
        return items.last();
    }
    QString selectedTitle() const
    {
        return bar->selectedTabItem() ? bar->selectedTabItem()->property("title").toString() : QString();
    }
    /// The titles in order, with brackets around the selected one: "A [B] C".
    QString picture() const
    {
        QStringList words;
        for (QObject *item : bar->tabItems()) {
            const QString title = item->property("title").toString();
            words.append(item == bar->selectedTabItem() ? u'[' + title + u']' : title);
        }
        return words.join(u' ');
    }
    QObject *item(const QString &title) const
    {
        for (QObject *candidate : bar->tabItems()) {
            if (candidate->property("title").toString() == title)
                return candidate;
        }
        return nullptr;
    }
    PSMTabBarCell *cell(const QString &title) const { return bar->cellForTabItem(item(title)); }
    /// The titles that stand in the bar, from left to right.
    QString shown() const
    {
        QList<PSMTabBarCell *> cells = bar->cells();
        cells.removeIf([](const PSMTabBarCell *cell) { return cell->isInOverflowMenu(); });
        std::ranges::sort(cells, {}, [](const PSMTabBarCell *cell) { return cell->frame().left(); });
        QString titles;
        for (const PSMTabBarCell *cell : cells)
            titles += cell->title();
        return titles;
    }

    QWidget window;
    FullDelegate delegate;
    VXTabBarControl *bar = new VXTabBarControl(&window);
    QWidget *content = new QWidget(&window);
    QList<Item *> items;
};
