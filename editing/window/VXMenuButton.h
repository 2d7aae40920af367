#pragma once

#include <QMenu>
#include <QToolButton>

/// A button that pops up its menu next to itself. Its items tell the button that they were clicked, which
/// announces it.
class VXMenuButton : public QToolButton
{
    Q_OBJECT
    Q_PROPERTY(Qt::Edge preferredEdge READ preferredEdge WRITE setPreferredEdge)
public:
    Q_INVOKABLE explicit VXMenuButton(QWidget *parent = nullptr);

    /// Appends an item to the menu.
    Q_INVOKABLE QAction *addItemWithTitle(const QString &title);
    Q_INVOKABLE QMenu *itemMenu() const { return m_menu; }
    /// The side of the button on which the menu opens; the bottom at first.
    Qt::Edge preferredEdge() const { return m_preferredEdge; }
    Q_INVOKABLE void setPreferredEdge(Qt::Edge edge) { m_preferredEdge = edge; }
    /// Where the top left corner of the menu comes to stand, in global coordinates: next to the button, or to
    /// all of the place that it takes in a toolbar.
    QPoint menuPosition() const;
    /// The item at which a menu is opened that stands on one of its items: the last that can be seen.
    Q_INVOKABLE QAction *positioningItem() const;

public Q_SLOTS:
    /// Opens the menu.
    void popUpMenu();
    void itemClicked(QAction *item);

Q_SIGNALS:
    void itemChosen(QAction *item);

private:
    QMenu *m_menu;
    Qt::Edge m_preferredEdge = Qt::BottomEdge;
};
