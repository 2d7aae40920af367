#pragma once

#include <QMimeData>
#include <QPointer>
#include <QWidget>

namespace runebook {

/// A tab between two bars, of the type "VXTabBarControlItemPBType". Only bars of this process can take it.
class DraggedTab : public QMimeData
{
public:
    DraggedTab(QWidget *bar, QObject *item) : m_bar(bar), m_item(item)
    {
        setData(QStringLiteral("VXTabBarControlItemPBType"), item->property("title").toString().toUtf8());
    }
    /// Where it comes from; null once that is gone, as the item may be.
    QWidget *bar() const { return m_bar; }
    QObject *item() const { return m_item; }

private:
    QPointer<QWidget> m_bar;
    QPointer<QObject> m_item;
};

} // namespace runebook
