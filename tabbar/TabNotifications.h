#pragma once

#include <QPointer>
#include <QString>
#include <functional>
#include <utility>
#include <vector>

namespace runebook {

/// Who hears of the notifications of a tab bar. What an observer throws is logged.
class TabNotifications
{
public:
    using Observer = std::function<void(const QString &name, QObject *item)>;
    /// Calls \a observer for each notification as long as \a context lives.
    void addObserver(QObject *context, Observer observer);
    /// The same for all bars, to the end of the process: a later one takes the place.
    static void setSharedObserver(Observer observer);

    /// Tells the observers, then calls \a tell for those who are connected to the bar, then tells the shared
    /// observer.
    void post(const QString &name, QObject *item, const std::function<void()> &tell);

private:
    std::vector<std::pair<QPointer<QObject>, Observer>> m_observers;
};

} // namespace runebook
