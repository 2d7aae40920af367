#include "editing/window/VXMenuButton.h"

#include <QToolBar>

VXMenuButton::VXMenuButton(QWidget *parent) : QToolButton(parent), m_menu(new QMenu(this))
{
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QToolButton::clicked, this, &VXMenuButton::popUpMenu);
    connect(m_menu, &QMenu::triggered, this, &VXMenuButton::itemClicked);
}

QAction *VXMenuButton::addItemWithTitle(const QString &title)
{
    return m_menu->addAction(title);
}

void VXMenuButton::itemClicked(QAction *item)
{
    Q_EMIT itemChosen(item);
}

QAction *VXMenuButton::positioningItem() const
{
    QAction *last = nullptr;
    for (QAction *item : m_menu->actions()) {
        if (item->isVisible() && !item->isSeparator())
            last = item;
    }
    return last;
}

QPoint VXMenuButton::menuPosition() const
{
    // In a toolbar the buttons are as high as its layout makes them, the place they take is as high as it is.
    QRect place = rect();
    if (const auto *bar = qobject_cast<const QToolBar *>(parentWidget())) {
        const int line = bar->orientation() == Qt::Horizontal ? bar->height() : height();
        place = QRect(0, (height() - line) / 2, width(), line);
    }
    const QSize menu = m_menu->sizeHint();
    QPoint corner = place.bottomLeft() + QPoint(0, 1);
    if (m_preferredEdge == Qt::TopEdge)
        corner = place.topLeft() - QPoint(0, menu.height());
    else if (m_preferredEdge == Qt::LeftEdge)
        corner = place.topLeft() - QPoint(menu.width(), 0);
    else if (m_preferredEdge == Qt::RightEdge)
        corner = place.topRight() + QPoint(1, 0);
    return mapToGlobal(corner);
}

void VXMenuButton::popUpMenu()
{
    m_menu->popup(menuPosition());
}
