#include "editing/window/SearchOffers.h"

#include "editing/records/RSRTVArrayController.h"
#include "editing/search/SearchMenu.h"

namespace runebook {

namespace {

/// The settings under which the text could be tried besides \a now.
QList<SearchOffers::Offer> candidates(const SearchSettings &now)
{
    QList<SearchOffers::Offer> offers;
    if (now.matchCase && !now.regex)
        offers << SearchOffers::Offer {{now.state, false, false}, SearchOffers::tr("Either case"), 0};
    for (const SearchMenu::Item &item : SearchMenu::items()) {
        const bool isMode = !item.isSeparator() && item.tag <= SearchMenu::kLastModeTag;
        if (isMode && (now.regex || item.tag != static_cast<int>(now.effectiveMode())))
            offers << SearchOffers::Offer {{item.tag, now.matchCase, false}, item.title, 0};
    }
    return offers;
}

} // namespace

SearchOffers::SearchOffers(RSRTVArrayController &controller, QObject *parent)
    : QObject(parent), m_controller(controller)
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, &SearchOffers::countNext);
}

void SearchOffers::start(const QString &text, const SearchSettings &settings)
{
    m_text = text;
    m_settings = settings;
    m_offers.clear();
    m_pending = candidates(settings);
    m_timer.start();
}

void SearchOffers::stop()
{
    m_timer.stop();
    m_text.clear();
    m_pending.clear();
    m_offers.clear();
}

void SearchOffers::countNext()
{
    constexpr int kSliceMs = 8;
    if (m_pending.isEmpty()) {
        m_timer.stop();
        Q_EMIT ready();
        return;
    }
    Offer &next = m_pending.front();
    if (const auto predicate = SearchFilter(next.settings).result(m_text).predicate) {
        const std::optional<qsizetype> count = m_controller.countPassing(*predicate, kSliceMs);
        if (!count)
            return;
        next.count = *count;
    }
    if (next.count > 0)
        m_offers << next;
    m_pending.removeFirst();
}

} // namespace runebook
