#pragma once

#include <QPointer>
#include <QWidget>

namespace runebook {

/// The content view of a tab bar, which shows the view of the selected item and nothing else. An item's view
/// is its property "view"; one that is not shown has no parent.
class TabContent
{
public:
    QWidget *view() const { return m_view; }
    void setView(QWidget *view) { m_view = view; }
    /// Shows the view of \a item, which may be null.
    void show(const QObject *item);
    /// Gives the view of \a item the size it will have.
    void resizeViewOf(const QObject *item) const;

    /// While views change: somebody who types in one tab's view goes on typing in the view that takes its
    /// place.
    class FocusKeeper
    {
    public:
        explicit FocusKeeper(const TabContent &content) : m_content(content.m_view), m_hadFocus(holdsFocus())
        {
        }
        ~FocusKeeper();
        Q_DISABLE_COPY_MOVE(FocusKeeper)

    private:
        bool holdsFocus() const;

        QPointer<QWidget> m_content;
        bool m_hadFocus;
    };

private:
    QPointer<QWidget> m_view;
};

} // namespace runebook
