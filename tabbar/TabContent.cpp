#include "tabbar/TabContent.h"

#include <QApplication>
#include <QStackedLayout>

namespace runebook {

namespace {

QWidget *viewOf(const QObject *item)
{
    return item ? item->property("view").value<QWidget *>() : nullptr;
}

QWidgetList viewsIn(const QWidget &content)
{
    return content.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

} // namespace

TabContent::FocusKeeper::~FocusKeeper()
{
    if (!m_hadFocus || !m_content || holdsFocus())
        return;
    const QWidgetList views = viewsIn(*m_content);
    if (views.isEmpty())
        return;
    QWidget *last = views.first()->focusWidget();
    (last ? last : views.first())->setFocus();
}

bool TabContent::FocusKeeper::holdsFocus() const
{
    const QWidget *focus = QApplication::focusWidget();
    return m_content && focus && m_content->isAncestorOf(focus);
}

void TabContent::show(const QObject *item)
{
    if (!m_view)
        return;
    QWidget *view = viewOf(item);
    for (QWidget *other : viewsIn(*m_view)) {
        if (other == view)
            continue;
        other->hide();
        other->setParent(nullptr);
    }
    if (!view)
        return;
    if (!m_view->layout())
        new QStackedLayout(m_view); // pins to all four edges, whatever size the view would like
    m_view->layout()->setContentsMargins(0, 0, 0, 0);
    m_view->layout()->addWidget(view);
    view->show();
}

void TabContent::resizeViewOf(const QObject *item) const
{
    if (QWidget *view = viewOf(item); view && m_view)
        view->resize(m_view->size());
}

} // namespace runebook
