#pragma once

#include <QHash>
#include <QMainWindow>
#include <memory>

class QAction;
class QTabWidget;

namespace Ui {
class VXPreferencesController;
}

/// The preferences: a window whose toolbar leads to its panes. Each pane is an item of the tab view; the name
/// of the item is its identifier in the toolbar and the name of its picture. Settings apply at once.
class VXPreferencesController : public QMainWindow
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit VXPreferencesController(QWidget *parent = nullptr);
    ~VXPreferencesController() override;
    /// Registers nothing so far: an unset choice reads as its plainest value.
    Q_INVOKABLE static void registerDefaults();

    Q_INVOKABLE QTabWidget *tabView() const;
    Q_INVOKABLE void showWindow();
    Q_INVOKABLE void showPrefpaneWithIdentifier(const QString &identifier);
    /// Commits a field that is being edited. Always true.
    Q_INVOKABLE bool windowShouldClose();

public: // the toolbar
    /// The identifiers of all panes, in order.
    Q_INVOKABLE QStringList toolbarSelectableItemIdentifiers() const;
    Q_INVOKABLE QStringList toolbarAllowedItemIdentifiers() const;
    Q_INVOKABLE QStringList toolbarDefaultItemIdentifiers() const;
    /// The item of a pane, or null.
    Q_INVOKABLE QAction *toolbarItemForItemIdentifier(const QString &identifier) const;
    Q_INVOKABLE QString selectedItemIdentifier() const;
    /// Selects the pane of \a item.
    Q_INVOKABLE void toolbarSelection(QAction *item);
    /// Keeps the toolbar in step.
    Q_INVOKABLE void tabViewDidSelectTabViewItem(QTabWidget *tabView, QWidget *item);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void fitScreen();
    void fillToolbar();
    void addShortcuts();

    std::unique_ptr<Ui::VXPreferencesController> m_ui;
    QHash<QString, QAction *> m_items;
};
