#pragma once

#include "model/VXGlyphInfo.h"
#include "platform/GapVector.h"
#include "platform/IndexSet.h"

namespace runebook {

/// The records of a document in their order. Edited one by one it costs no more than what lies between two
/// edits; whoever asks for all of it as a list has the gap closed that edits left. It knows where each record
/// stands as well; records carry hints for that, which are its own as long as they stand in no other list.
class InfoSequence
{
public:
    qsizetype count() const { return static_cast<qsizetype>(m_infos.size()); }
    const InfoPtr &at(qsizetype place) const { return m_infos[static_cast<std::size_t>(place)]; }
    /// Stays as it is until the next change.
    const InfoList &list() const;
    /// Whether \a infos is what list() answers.
    bool isItself(const InfoList &infos) const { return &infos == &m_infos.slots(); }
    /// The first place of \a info, or -1.
    qsizetype placeOf(const VXGlyphInfo &info) const;
    bool lists(const VXGlyphInfo &info) const
    {
        return m_isShared ? placeOf(info) >= 0 : info.listings() > 0;
    }
    /// Whether its records may stand in other lists, too.
    bool isShared() const { return m_isShared; }
    void setShared() { m_isShared = true; }

    // The records' listings are to be counted before they are inserted or replaced, or erased.
    /// Makes \a infos the list and answers the former one.
    InfoList exchange(InfoList infos);
    void replace(qsizetype place, const InfoPtr &info);
    void makeRoomFor(std::size_t more) { m_infos.makeRoomFor(more); }
    void insert(const InfoList &infos, const IndexSet &places);
    InfoList erase(const IndexSet &places);

private:
    void forgetPlaces() const { m_placesAreValid = false; }
    void followMoved(const GapVector<InfoPtr>::Moved &moved);
    void number() const;
    qsizetype searchedPlace(const VXGlyphInfo &info) const;

    mutable GapVector<InfoPtr> m_infos; ///< the hints of records are its slots
    mutable bool m_placesAreValid = false; ///< all hints are those of this list
    bool m_isShared = false;
};

} // namespace runebook
