#include "document/InfoSequence.h"

namespace runebook {

namespace {

/// Whether \a info stands in this slot at or near its hint, which is set then.
bool findNearHint(const InfoList &slots, const VXGlyphInfo &info)
{
    constexpr std::size_t kNear = 64;
    const std::size_t hint = info.placeHint();
    if (hint < slots.size() && slots[hint].get() == &info)
        return true;
    const std::size_t end = std::min(slots.size(), hint + kNear);
    for (std::size_t slot = hint < kNear ? 0 : hint - kNear; slot < end; ++slot) {
        if (slots[slot].get() == &info) {
            slots[slot]->setPlaceHint(static_cast<quint32>(slot));
            return true;
        }
    }
    return false;
}

} // namespace

const InfoList &InfoSequence::list() const
{
    if (!m_infos.isClosed())
        forgetPlaces();
    return m_infos.closed();
}

qsizetype InfoSequence::placeOf(const VXGlyphInfo &info) const
{
    if (info.listings() == 0)
        return -1;
    const InfoList &slots = m_infos.slots();
    if (info.listings() == 1) {
        // What stands only once has no other place; edits near by have moved it a little.
        if (findNearHint(slots, info))
            return static_cast<qsizetype>(m_infos.placeOfSlot(info.placeHint()));
    } else if (m_isShared) {
        return searchedPlace(info); // the hint may be that of another list
    }
    if (!m_placesAreValid)
        number();
    const std::size_t slot = info.placeHint();
    if (slot < slots.size() && slots[slot].get() == &info)
        return static_cast<qsizetype>(m_infos.placeOfSlot(slot));
    return m_isShared ? searchedPlace(info) : -1; // another list may have set its hint since
}

qsizetype InfoSequence::searchedPlace(const VXGlyphInfo &info) const
{
    const InfoList &slots = m_infos.slots();
    const auto found = std::find_if(slots.begin(), slots.end(),
                                    [&info](const InfoPtr &listed) { return listed.get() == &info; });
    return found == slots.end()
        ? -1
        : static_cast<qsizetype>(m_infos.placeOfSlot(static_cast<std::size_t>(found - slots.begin())));
}

void InfoSequence::number() const
{
    const InfoList &slots = m_infos.slots();
    // Backwards, so that of a record that stands in the list twice the first place stays.
    for (std::size_t slot = slots.size(); slot-- > 0;) {
        if (slots[slot])
            slots[slot]->setPlaceHint(static_cast<quint32>(slot));
    }
    m_placesAreValid = true;
}

/// Sets hints anew where that is little work; where it is much, it waits until somebody asks.
void InfoSequence::followMoved(const GapVector<InfoPtr>::Moved &moved)
{
    constexpr std::size_t kSmallPart = 16;
    if (moved.count() > m_infos.size() / kSmallPart + 1) {
        forgetPlaces();
        return;
    }
    for (std::size_t slot = moved.first; slot < moved.last; ++slot) {
        const InfoPtr &info = m_infos.slots()[slot];
        if (!info)
            continue;
        if (info->listings() > 1)
            forgetPlaces();
        else
            info->setPlaceHint(static_cast<quint32>(slot));
    }
}

InfoList InfoSequence::exchange(InfoList infos)
{
    InfoList former = list();
    m_infos = GapVector<InfoPtr>(std::move(infos));
    forgetPlaces();
    return former;
}

void InfoSequence::replace(qsizetype place, const InfoPtr &info)
{
    const std::size_t at = static_cast<std::size_t>(place);
    const InfoPtr former = std::exchange(m_infos[at], info);
    if (former->listings() > 0 || info->listings() > 1)
        forgetPlaces();
    else
        info->setPlaceHint(static_cast<quint32>(m_infos.slotOf(at)));
}

void InfoSequence::insert(const InfoList &infos, const IndexSet &places)
{
    followMoved(m_infos.insert(places, [&infos](std::size_t i) { return infos[i]; }));
    for (std::size_t i = 0; i < infos.size(); ++i) {
        if (infos[i]->listings() > 1)
            forgetPlaces();
        else
            infos[i]->setPlaceHint(static_cast<quint32>(m_infos.slotOf(static_cast<std::size_t>(places[i]))));
    }
}

InfoList InfoSequence::erase(const IndexSet &places)
{
    InfoList gone;
    gone.reserve(places.size());
    followMoved(m_infos.erase(places, [this, &gone](InfoPtr info) {
        if (info->listings() > 0)
            forgetPlaces();
        gone.push_back(std::move(info));
    }));
    return gone;
}

} // namespace runebook
