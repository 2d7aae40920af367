#pragma once

#include "tabbar/TabBarDelegate.h"
#include "tabbar/TabContent.h"
#include "tabbar/TabNotifications.h"
#include "tabbar/TabStrip.h"
#include "tabbar/TabWidths.h"

#include <QPointer>
#include <QWidget>
#include <limits>

class PSMOverflowPopUpButton;
class QMenu;
class QMimeData;
class QToolButton;

namespace runebook {
class TabArrangement;
class TabBarFolding;
class TabBarKeys;
class TabBarMouse;
class TabResizeHandle;
class TabTitleEditor;
struct TabBarMeasures;
} // namespace runebook

/// A bar of tabs, one for each item: draws them, lets the user select, close, reorder and reach the ones that
/// found no room, shows the selected item's view in the content view, and reports to its delegate.
///
/// An item is any QObject with the properties "view" (QWidget *) and "title" (QString), and perhaps "icon"
/// (QIcon); titles are followed through the property's notify signal. The bar owns neither items nor views:
/// a view that is not shown has no parent, and the item has to delete it. An item that is destroyed leaves
/// the bar without a word to the delegate. Main thread only.
///
/// Keys, in the bar's window: Ctrl+Tab and Ctrl+PgDown select the next tab, with Shift+Tab and PgUp the
/// previous one, around the ends; Ctrl+Shift+PgUp and PgDown move the selected tab. In the bar itself the
/// arrow keys, Home and End select and Delete closes.
class VXTabBarControl : public QWidget, private runebook::TabStrip
{
    Q_OBJECT
    Q_INTERFACES(runebook::TabStrip)
    Q_PROPERTY(QList<QObject *> tabItems READ tabItems WRITE setViewControllers)
    Q_PROPERTY(uint selectionIndex READ selectionIndex WRITE selectTabItemAtIndex)
    Q_PROPERTY(Qt::Orientation orientation READ orientation WRITE setOrientation)
    Q_PROPERTY(bool canCloseOnlyTab READ canCloseOnlyTab WRITE setCanCloseOnlyTab)
    Q_PROPERTY(bool disableTabClose READ disableTabClose WRITE setDisableTabClose)
    Q_PROPERTY(bool hideForSingleTab READ hideForSingleTab WRITE setHideForSingleTab)
    Q_PROPERTY(bool sizeCellsToFit READ sizeCellsToFit WRITE setSizeCellsToFit)
    Q_PROPERTY(bool useFullWidth READ useFullWidth WRITE setUseFullWidth)
    Q_PROPERTY(bool useOverflowMenu READ useOverflowMenu WRITE setUseOverflowMenu)
    Q_PROPERTY(
        bool allowsBackgroundTabClosing READ allowsBackgroundTabClosing WRITE setAllowsBackgroundTabClosing)
    Q_PROPERTY(bool allowsResizing READ allowsResizing WRITE setAllowsResizing)
    Q_PROPERTY(bool selectsTabsOnMouseDown READ selectsTabsOnMouseDown WRITE setSelectsTabsOnMouseDown)
    Q_PROPERTY(bool alwaysShowActiveTab READ alwaysShowActiveTab WRITE setAlwaysShowActiveTab)
    Q_PROPERTY(bool allowsScrubbing READ allowsScrubbing WRITE setAllowsScrubbing)
    Q_PROPERTY(bool automaticallyAnimates READ automaticallyAnimates WRITE setAutomaticallyAnimates)
    Q_PROPERTY(bool showAddTabButton READ showAddTabButton WRITE setShowAddTabButton)
    Q_PROPERTY(int cellMinWidth READ cellMinWidth WRITE setCellMinWidth)
    Q_PROPERTY(int cellMaxWidth READ cellMaxWidth WRITE setCellMaxWidth)
    Q_PROPERTY(int cellOptimumWidth READ cellOptimumWidth WRITE setCellOptimumWidth)
    Q_PROPERTY(TearOffStyle tearOffStyle READ tearOffStyle WRITE setTearOffStyle)
    Q_PROPERTY(QString style READ styleName WRITE setStyleNamed)
    Q_PROPERTY(QObject *delegate READ delegate WRITE setDelegate)
    Q_PROPERTY(QWidget *partnerView READ partnerView WRITE setPartnerView)
    Q_PROPERTY(QWidget *contentView READ contentView WRITE setContentView)
    Q_PROPERTY(int resizeAreaCompensation READ resizeAreaCompensation WRITE setResizeAreaCompensation)
    Q_PROPERTY(bool isTabBarHidden READ isTabBarHidden)

public:
    /// How a tab is shown that was dragged off the bar: by itself, or with a small picture of its view.
    enum TearOffStyle { TearOffTab = 0, TearOffMiniature = 1 };
    Q_ENUM(TearOffStyle)

    /// The index of nothing: larger than any index there is.
    static constexpr uint NotFound = std::numeric_limits<uint>::max();

    explicit VXTabBarControl(QWidget *parent = nullptr);
    ~VXTabBarControl() override;

public: // items
    QList<QObject *> tabItems() const { return m_tabItems; }
    QList<PSMTabBarCell *> cells() const override { return m_cells; }
    Q_INVOKABLE uint countOfTabItems() const override { return uint(m_tabItems.size()); }
    Q_INVOKABLE QObject *tabItemAtIndex(uint index) const; // none beyond the end
    Q_INVOKABLE uint indexOfTabItem(const QObject *item) const override; // NotFound for a stranger
    /// Appends \a item; nothing for an item that is in the bar already. Does not select it.
    Q_INVOKABLE void addTabItem(QObject *item);
    /// \a index counts from 0; one beyond the end appends. The selection stays with its item.
    Q_INVOKABLE void insertTabItemAtIndex(QObject *item, uint index);
    /// Takes \a item out without asking or telling anybody. If it was selected, nothing is.
    Q_INVOKABLE void removeTabItem(QObject *item);
    /// Closes \a item as its close button does, if the rules and the delegate let it.
    Q_INVOKABLE void closeTabItem(QObject *item) override;
    Q_INVOKABLE void moveTabItemToIndex(QObject *item, uint index);
    /// Makes \a items the bar's items, in this order; the selection stays if its item is among them.
    Q_INVOKABLE void setViewControllers(const QList<QObject *> &items);

public: // selection
    uint selectionIndex() const { return m_selectionIndex; }
    Q_INVOKABLE QObject *selectedTabItem() const override { return tabItemAtIndex(m_selectionIndex); }
    Q_INVOKABLE QObject *previousTabItem() const { return m_previousItem; }
    Q_INVOKABLE void selectTabItem(QObject *item) override;
    Q_INVOKABLE void selectTabItemAtIndex(uint index); // nothing beyond the end

public: // layout; these hide the repainting operation of the same name on purpose
    /// Lays the cells out anew, animated when the bar animates automatically.
    Q_INVOKABLE void update();
    Q_INVOKABLE void update(bool animate);
    /// While \a disable, update does nothing; allowing updates again makes up for it. Calls nest: each true
    /// wants a false of its own.
    Q_INVOKABLE void setDisableUpdates(bool disable);
    /// Folds the bar away or back; the partner view takes or gives the room where no layout does.
    Q_INVOKABLE void hideTabBarAnimate(bool hide, bool animate);
    bool isTabBarHidden() const override;
    PSMTabBarCell *cellForTabItem(const QObject *item) const override;
    /// The cell of a shown tab under \a point, in the bar's coordinates.
    PSMTabBarCell *cellAtPoint(const QPointF &point) const override;
    PSMOverflowPopUpButton *overflowPopUpButton() const { return m_overflowButton; }
    QToolButton *addTabButton() const { return m_addTabButton; }
    /// Lets the user type a new title in the tab of \a item: Return and leaving it end in titleEdited, Escape
    /// in nothing. A tab in the overflow menu is selected first.
    Q_INVOKABLE void editTitleOfTabItem(QObject *item);
    /// Fills \a menu just before it shows; it has to be the overflow button's.
    void menuNeedsUpdate(QMenu *menu);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public: // settings; every setter lays out anew
    Qt::Orientation orientation() const override { return m_orientation; }
    void setOrientation(Qt::Orientation orientation);
    bool canCloseOnlyTab() const { return m_canCloseOnlyTab; }
    void setCanCloseOnlyTab(bool can) { assign(m_canCloseOnlyTab, can); }
    bool disableTabClose() const { return m_disableTabClose; }
    void setDisableTabClose(bool disable) { assign(m_disableTabClose, disable); }
    bool hideForSingleTab() const { return m_hideForSingleTab; }
    void setHideForSingleTab(bool hide) { assign(m_hideForSingleTab, hide); }
    bool sizeCellsToFit() const { return m_widthRules.sizeCellsToFit; }
    void setSizeCellsToFit(bool fit) { assign(m_widthRules.sizeCellsToFit, fit); }
    bool useFullWidth() const { return m_widthRules.useFullWidth; }
    void setUseFullWidth(bool use) { assign(m_widthRules.useFullWidth, use); }
    bool useOverflowMenu() const { return m_widthRules.useOverflowMenu; }
    void setUseOverflowMenu(bool use) { assign(m_widthRules.useOverflowMenu, use); }
    bool allowsBackgroundTabClosing() const { return m_allowsBackgroundTabClosing; }
    void setAllowsBackgroundTabClosing(bool allow) { assign(m_allowsBackgroundTabClosing, allow); }
    bool allowsResizing() const { return m_allowsResizing; }
    void setAllowsResizing(bool allow) { assign(m_allowsResizing, allow); }
    bool selectsTabsOnMouseDown() const override { return m_selectsTabsOnMouseDown; }
    void setSelectsTabsOnMouseDown(bool select) { assign(m_selectsTabsOnMouseDown, select); }
    bool alwaysShowActiveTab() const { return m_alwaysShowActiveTab; }
    void setAlwaysShowActiveTab(bool always) { assign(m_alwaysShowActiveTab, always); }
    bool allowsScrubbing() const override { return m_allowsScrubbing; }
    void setAllowsScrubbing(bool allow) { assign(m_allowsScrubbing, allow); }
    bool automaticallyAnimates() const { return m_automaticallyAnimates; }
    void setAutomaticallyAnimates(bool animate) { assign(m_automaticallyAnimates, animate); }
    bool showAddTabButton() const { return m_showAddTabButton; }
    void setShowAddTabButton(bool show) { assign(m_showAddTabButton, show); }
    int cellMinWidth() const { return m_widthRules.cellMinWidth; }
    void setCellMinWidth(int points) { assign(m_widthRules.cellMinWidth, points); }
    int cellMaxWidth() const { return m_widthRules.cellMaxWidth; }
    void setCellMaxWidth(int points) { assign(m_widthRules.cellMaxWidth, points); }
    int cellOptimumWidth() const { return m_widthRules.cellOptimumWidth; }
    void setCellOptimumWidth(int points) { assign(m_widthRules.cellOptimumWidth, points); }
    TearOffStyle tearOffStyle() const { return m_tearOffStyle; }
    void setTearOffStyle(TearOffStyle style) { assign(m_tearOffStyle, style); }
    int resizeAreaCompensation() const { return m_resizeAreaCompensation; }
    void setResizeAreaCompensation(int points) { assign(m_resizeAreaCompensation, points); }
    /// The style that draws; "style" by key is its name. QWidget::style() is something else.
    const PSMTabStyle &tabStyle() const override { return *m_style; }
    void setTabStyle(std::unique_ptr<PSMTabStyle> style);
    QString styleName() const { return m_style->name(); }
    /// "Yosemite" or "BigSur"; another name changes nothing.
    Q_INVOKABLE void setStyleNamed(const QString &name);
    QWidget *partnerView() const;
    void setPartnerView(QWidget *view);
    QWidget *contentView() const { return m_content.view(); }
    void setContentView(QWidget *view);
    /// Not owned; see runebook::TabBarDelegate for the operations it may have.
    QObject *delegate() const { return m_delegate.object(); }
    void setDelegate(QObject *delegate);

public: // observers of the notifications
    using Observer = runebook::TabNotifications::Observer;
    /// Calls \a observer for each notification as long as \a context lives. What it throws is logged.
    void addObserver(QObject *context, Observer observer)
    {
        m_notifications.addObserver(context, std::move(observer));
    }
    /// The same for all bars, to the end of the process: a later one takes the place.
    static void setSharedObserver(Observer observer)
    {
        runebook::TabNotifications::setSharedObserver(std::move(observer));
    }

public: // dragging between bars
    /// What is dragged when \a item is. Only bars of this process can take it.
    std::unique_ptr<QMimeData> mimeDataForTabItem(QObject *item) override;
    /// Takes the tab that \a dragged stands for out of its bar into this one, at the tab under \a point, and
    /// selects it. False for anything else, and for a tab of this bar.
    bool acceptDroppedTab(const QMimeData &dragged, const QPointF &point) override;

public: // archive
    /// The keys of the archive, in the order in which they are written.
    static QStringList archiveKeys();
    /// The bar's settings and a record of its cells under those keys. Views and delegate stand in it by
    /// their object names.
    QVariantMap archive() const;
    /// Takes the settings over from \a archive; missing keys change nothing. Views and delegate are looked up
    /// in the bar's window. Cells are not made: each belongs to an item, which an archive cannot hold.
    void restoreFromArchive(const QVariantMap &archive);

Q_SIGNALS:
    /// "TabDidOpenNotification" or "TabWillCloseNotification".
    void notificationPosted(const QString &name, QObject *item);
    void selectionChanged(uint index);
    /// The user moved \a item, by dragging or by key; told once, when the move is over.
    void tabItemMoved(QObject *item);
    void addTabRequested();
    /// The user typed \a title, which is not empty, for \a item.
    void titleEdited(QObject *item, const QString &title);
    /// What the window would restore has changed.
    void restorableStateChanged();

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    QWidget &widget() override { return *this; }
    QList<int> shownCells() const override;
    bool carriesMiniatures() const override { return m_tearOffStyle == TearOffMiniature; }
    void moveQuietly(QObject *item, uint index) override;
    void slide() override { update(true); }
    void tellMoved(QObject *item) override { Q_EMIT tabItemMoved(item); }
    void resizeByHandle(int delta) override;

    template <typename T> void assign(T &field, const T &value)
    {
        field = value;
        update();
    }
    void makeParts();
    void insertCell(QObject *item, qsizetype index);
    void itemDestroyed(QObject *item);
    void postNotification(const QString &name, QObject *item);
    void showSelectedView();
    void setSelectionIndex(uint index);

    void refreshCloseButtons();
    void layoutCells(bool animate);
    runebook::TabBarMeasures measures() const;
    void placeButtons();
    int fullThickness() const;
    PSMTabBarState barState() const;
    bool mayAnimate() const;
    bool showToolTip(const QPoint &point);

    VXTabBarControl *const m_self = this; ///< what the delegate's operations are given
    QList<PSMTabBarCell *> m_cells;
    QList<QObject *> m_tabItems;
    uint m_selectionIndex = NotFound;
    QPointer<QObject> m_previousItem;
    Qt::Orientation m_orientation = Qt::Horizontal;
    bool m_canCloseOnlyTab = false;
    bool m_disableTabClose = false;
    bool m_hideForSingleTab = false;
    bool m_allowsBackgroundTabClosing = true;
    bool m_allowsResizing = false;
    bool m_selectsTabsOnMouseDown = false;
    bool m_alwaysShowActiveTab = false;
    bool m_allowsScrubbing = false;
    bool m_automaticallyAnimates = false;
    bool m_showAddTabButton = false;
    int m_resizeAreaCompensation = 0;
    int m_sideWidth = 0; // of a vertical bar, once the user has dragged its handle
    TearOffStyle m_tearOffStyle = TearOffTab;
    runebook::TabWidthRules m_widthRules;
    std::unique_ptr<PSMTabStyle> m_style;
    runebook::TabBarDelegate m_delegate;
    runebook::TabContent m_content;
    runebook::TabNotifications m_notifications;
    std::unique_ptr<runebook::TabBarMouse> m_mouse;
    std::unique_ptr<runebook::TabBarKeys> m_keys;
    // Children of the bar:
    runebook::TabArrangement *m_arrangement;
    runebook::TabBarFolding *m_folding;
    runebook::TabTitleEditor *m_titleEditor;
    PSMOverflowPopUpButton *m_overflowButton;
    QToolButton *m_addTabButton;
    runebook::TabResizeHandle *m_resizeHandle;

    int m_disabledUpdates = 0; // so many calls want it
    bool m_hideRequested = false;
    bool m_isResizing = false;
    bool m_isAwake = false;
};
