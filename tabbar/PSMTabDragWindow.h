#pragma once

#include <QWidget>

class PSMTabDragView;

/// The frameless window that carries a drag view under the pointer. It lets every event through to what is
/// below and never takes the keyboard.
class PSMTabDragWindow : public QWidget
{
    Q_OBJECT
public:
    PSMTabDragWindow(const QPixmap &tab, const QPixmap &miniature, QWidget *parent);

private:
    PSMTabDragView *m_view;
};
