#include "editing/window/NameUsesSearch.h"

#include "document/VXDocument.h"

namespace runebook {

using namespace std::chrono_literals;

NameUsesSearch::NameUsesSearch(VXDocument &document, Maker maker, QObject *parent)
    : QObject(parent), m_maker(std::move(maker))
{
    const auto startAnew = [this] {
        if (m_uses)
            start();
    };
    connect(&document, &VXDocument::infosInserted, this, startAnew);
    connect(&document, &VXDocument::infosRemoved, this, startAnew);
    connect(&document, &VXDocument::infoReplaced, this, startAnew);
    connect(&document, &VXDocument::infosReset, this, startAnew);
    connect(&document, &VXDocument::infosChanged, this, startAnew);
    connect(&m_timer, &QTimer::timeout, this, &NameUsesSearch::runSlice);
}

void NameUsesSearch::stop()
{
    m_timer.stop();
    if (m_uses)
        Q_EMIT restarting();
    m_uses.reset();
}

void NameUsesSearch::start()
{
    stop();
    m_uses.emplace(m_maker());
    m_timer.start(0);
}

bool NameUsesSearch::runFor(std::chrono::milliseconds budget)
{
    if (!m_uses)
        start();
    if (!m_uses->runFor(budget))
        return false;
    m_timer.stop();
    return true;
}

void NameUsesSearch::runSlice()
{
    constexpr auto kSlice = 5ms;
    if (runFor(kSlice))
        Q_EMIT finished();
}

} // namespace runebook
