#include "tabbar/TabNotifications.h"

#include <exception>

namespace runebook {

namespace {

TabNotifications::Observer &sharedObserver()
{
    static TabNotifications::Observer observer;
    return observer;
}

} // namespace

void TabNotifications::addObserver(QObject *context, Observer observer)
{
    m_observers.emplace_back(context, std::move(observer));
}

void TabNotifications::setSharedObserver(Observer observer)
{
    sharedObserver() = std::move(observer);
}

void TabNotifications::post(const QString &name, QObject *item, const std::function<void()> &tell)
{
    const auto guarded = [&name](const auto &call) {
        try {
            call();
        } catch (const std::exception &exception) {
            qWarning("Exception on '%s': %s", qUtf8Printable(name), exception.what());
        } catch (...) {
            qWarning("Exception on '%s': %s", qUtf8Printable(name), "unknown");
        }
    };
    std::erase_if(m_observers, [](const auto &entry) { return !entry.first; });
    const auto observers = m_observers; // an observer may add others
    for (const auto &[context, observer] : observers) {
        if (context)
            guarded([&observer = observer, &name, item] { observer(name, item); });
    }
    guarded(tell);
    if (const Observer shared = sharedObserver())
        guarded([&shared, &name, item] { shared(name, item); });
}

} // namespace runebook
