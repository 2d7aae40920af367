#include "tabbar/PSMTabDragWindow.h"

#include "tabbar/PSMTabDragView.h"

namespace {

constexpr qreal kCarriedOpacity = 0.88; // what lies below stays visible: it is where the tab would go

} // namespace

PSMTabDragWindow::PSMTabDragWindow(const QPixmap &tab, const QPixmap &miniature, QWidget *parent)
    : QWidget(parent,
              Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowTransparentForInput
                  | Qt::WindowDoesNotAcceptFocus),
      m_view(new PSMTabDragView(tab, miniature, this))
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setWindowOpacity(kCarriedOpacity);
    setFixedSize(m_view->size());
}
