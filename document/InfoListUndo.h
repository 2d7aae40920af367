#pragma once

#include "model/VXGlyphInfo.h"
#include "platform/IndexSet.h"
#include "platform/UndoManager.h"

#include <algorithm>
#include <unordered_set>

namespace runebook {

/// What a change of a list does when it is taken back.
enum class ListUndo : quint8 {
    Remove, ///< every occurrence of the records, which were appended
    RemoveAt, ///< what was inserted at places
    Append, ///< the records, which were removed wherever they stood
    InsertAt, ///< what was removed from places
    Reorder, ///< the records are the whole former list
};

/// The inverse of one change of a document's list. It knows which records that was about and where they
/// stood, so that its step can be taken back alone while later ones changed other places. Of the list it
/// needs to know add(), remove(), insertAt(), removeAt(), reorder(), placesOf() and number().
template <typename List> class InfoListUndo final : public UndoOperation
{
public:
    /// One record or several: the operations for one alone have habits of their own.
    enum class How : quint8 { One, Several };

    InfoListUndo(List &list, ListUndo kind, How how, InfoList infos, IndexSet places)
        : m_list(list),
          m_kind(kind),
          m_how(how),
          m_listNumber(list.number()),
          m_infos(std::move(infos)),
          m_places(std::move(places))
    {
    }

    /// The inverse of putting \a fresh in the place of the list's records, \a former. To be made before they
    /// are counted as listed.
    static std::unique_ptr<InfoListUndo> ofReordering(List &list, InfoList former, const InfoList &fresh)
    {
        auto undo = std::make_unique<InfoListUndo>(list, ListUndo::Reorder, How::Several, std::move(former),
                                                   IndexSet());
        const InfoList &old = undo->m_infos;
        undo->m_isKnown = std::all_of(old.begin(), old.end(), standsOnce);
        std::copy_if(fresh.begin(), fresh.end(), std::back_inserter(undo->m_exchanged),
                     [](const InfoPtr &info) { return info->listings() == 0; });
        if (undo->m_exchanged.empty() && old.size() == fresh.size())
            return undo;
        std::unordered_set<const VXGlyphInfo *> kept;
        for (const InfoPtr &info : fresh)
            kept.insert(info.get());
        std::copy_if(old.begin(), old.end(), std::back_inserter(undo->m_exchanged),
                     [&kept](const InfoPtr &info) { return !kept.contains(info.get()); });
        return undo;
    }

    void perform(UndoManager &) override
    {
        if (m_isAlone && takesOut()) {
            // By place, so that this can be undone in turn where others stand behind them now.
            m_kind = ListUndo::RemoveAt;
            m_places = m_list.placesOf(m_infos);
            if (m_places.empty())
                return; // another change of the same step has taken them out
        }
        const bool isOne = m_how == How::One;
        switch (m_kind) {
        case ListUndo::Remove:
            isOne ? m_list.remove(m_infos.front()) : m_list.remove(m_infos);
            break;
        case ListUndo::RemoveAt:
            isOne ? m_list.removeAt(m_places.front()) : m_list.removeAt(m_places);
            break;
        case ListUndo::Append:
            isOne ? m_list.add(m_infos.front()) : m_list.add(m_infos);
            break;
        case ListUndo::InsertAt:
            isOne ? m_list.insertAt(m_infos.front(), m_places.front()) : m_list.insertAt(m_infos, m_places);
            break;
        case ListUndo::Reorder:
            m_list.reorder(m_infos);
            break;
        }
    }

    bool appendTouched(std::vector<UndoTouch> &touched) const override
    {
        // An order is nobody's: what changes it meets every other change of the list by its places.
        for (const InfoPtr &info : m_kind == ListUndo::Reorder ? m_exchanged : m_infos)
            touched.push_back({info.get(), UndoTouch::kWhole});
        return m_isKnown;
    }

    std::unique_ptr<UndoOperation> duplicate() const override
    {
        const bool isThere = !takesOut() || std::all_of(m_infos.begin(), m_infos.end(), standsOnce);
        if (m_listNumber != m_list.number() || !isThere)
            return nullptr;
        std::unique_ptr<InfoListUndo> second(new InfoListUndo(*this));
        second->m_isAlone = true;
        return second;
    }

    bool passBehind(const UndoOperation &later, Span together) override
    {
        const InfoListUndo *other = listChange(later);
        if (!other)
            return true;
        if (m_kind == ListUndo::Reorder || other->m_kind == ListUndo::Reorder || m_kind == ListUndo::Append)
            return false;
        if (takesOut())
            return true; // wherever they stand by now
        // The places of one operation count on what the others of the step did.
        const auto changesList = [](const auto &each) { return listChange(*each) != nullptr; };
        return std::count_if(together.begin(), together.end(), changesList) == 1 && shiftPlaces(*other);
    }

private:
    InfoListUndo(const InfoListUndo &) = default;

    static const InfoListUndo *listChange(const UndoOperation &operation)
    {
        return dynamic_cast<const InfoListUndo *>(&operation);
    }
    static bool standsOnce(const InfoPtr &info) { return info->listings() == 1; }
    bool takesOut() const { return m_kind == ListUndo::Remove || m_kind == ListUndo::RemoveAt; }

    /// False where the other change was made at one of the same places.
    bool shiftPlaces(const InfoListUndo &later)
    {
        const IndexSet &theirs = later.m_places;
        // What they inserted stands behind so many records of the list before.
        const auto inFront = [&](std::size_t n) {
            return later.takesOut() ? theirs[n] - static_cast<qsizetype>(n) : theirs[n];
        };
        std::vector<qsizetype> shifted;
        shifted.reserve(m_places.size());
        std::size_t passed = 0; // of theirs
        for (std::size_t i = 0; i < m_places.size(); ++i) {
            const qsizetype before =
                m_places[i] - static_cast<qsizetype>(i); // records in front, but for these
            while (passed < theirs.size() && inFront(passed) < before)
                ++passed;
            if (later.takesOut() && passed < theirs.size() && inFront(passed) == before)
                return false;
            const auto count = static_cast<qsizetype>(passed);
            shifted.push_back(before + (later.takesOut() ? count : -count) + static_cast<qsizetype>(i));
        }
        m_places = IndexSet(std::move(shifted));
        return true;
    }

    List &m_list;
    ListUndo m_kind;
    How m_how;
    bool m_isAlone = false; ///< other steps came behind the one that it takes back
    bool m_isKnown = true; ///< what it touches
    quint64 m_listNumber; ///< of the list that the places are of
    InfoList m_infos;
    IndexSet m_places; ///< where they stand, or stood
    InfoList m_exchanged; ///< by reordering: those of one of both lists only
};

} // namespace runebook
