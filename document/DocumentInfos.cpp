#include "document/DocumentInfos.h"

#include <QSet>
#include <algorithm>

namespace runebook {

DocumentInfos::DocumentInfos(GlyphInfoOwner &owner, UndoManager &undoManager)
    : m_undoManager(undoManager),
      m_ownership(owner, m_infos,
                  [this] {
                      Q_EMIT revised();
                      Q_EMIT changedSilently();
                  }),
      m_lookups(m_infos)
{
}

void DocumentInfos::install(InfoList infos)
{
    ++m_number;
    m_ownership.dismissAll();
    // Kept until all have heard: who shows the list still has its rows when it is told.
    const InfoList former = m_infos.exchange(std::move(infos));
    m_ownership.noteListChanged();
    Q_EMIT revised();
    for (const InfoPtr &info : list())
        m_ownership.adopt(info);
    m_lookups.drop();
    Q_EMIT reset();
}

void DocumentInfos::registerUndo(ListUndo kind, Undo::How how, const InfoList &infos, const IndexSet &places)
{
    m_undoManager.registerOperation(std::make_unique<Undo>(*this, kind, how, infos, places));
}

void DocumentInfos::add(const InfoPtr &info)
{
    registerUndo(ListUndo::Remove, Undo::How::One, {info}, {count()});
    putIn({info}, {count()}, Notice::Observers);
}

void DocumentInfos::add(const InfoList &infos)
{
    // What cannot be had fails before anything is changed.
    m_infos.makeRoomFor(infos.size());
    const IndexSet places = IndexSet::run(count(), infos.size());
    registerUndo(ListUndo::Remove, Undo::How::Several, infos, places);
    putIn(infos, places, Notice::Observers);
}

void DocumentInfos::remove(const InfoPtr &info)
{
    const IndexSet places = placesOf({info});
    registerUndo(ListUndo::Append, Undo::How::One, {info}, places);
    takeOut(places, Notice::Quiet);
}

void DocumentInfos::remove(const InfoList &infos)
{
    const IndexSet places = placesOf(infos);
    registerUndo(ListUndo::Append, Undo::How::Several, infos, places);
    takeOut(places, Notice::Quiet);
}

void DocumentInfos::insertAt(const InfoPtr &info, qsizetype index)
{
    const qsizetype place = qBound<qsizetype>(0, index, count());
    registerUndo(ListUndo::RemoveAt, Undo::How::One, {info}, {place});
    putIn({info}, {place}, Notice::Observers);
}

void DocumentInfos::insertAt(const InfoList &infos, const IndexSet &indexes)
{
    if (infos.empty() || infos.size() != indexes.size())
        return;
    m_infos.makeRoomFor(infos.size());
    // An index beyond the end means the end; undoing has to know which place that was.
    IndexSet places;
    places.reserve(indexes.size());
    for (const qsizetype index : indexes) {
        const auto before = static_cast<qsizetype>(places.size());
        places.push_back(qBound(before, index, count() + before));
    }
    registerUndo(ListUndo::RemoveAt, Undo::How::Several, infos, places);
    putIn(infos, places, Notice::Observers);
}

void DocumentInfos::removeAt(qsizetype index)
{
    const InfoPtr info = at(index);
    if (!info)
        return;
    registerUndo(ListUndo::InsertAt, Undo::How::One, {info}, {index});
    takeOut({index}, Notice::Observers);
    m_ownership.dismiss(info);
}

void DocumentInfos::removeAt(const IndexSet &indexes)
{
    IndexSet present;
    InfoList infos;
    for (const qsizetype index : indexes) {
        if (const InfoPtr info = at(index)) {
            present.push_back(index);
            infos.push_back(info);
        }
    }
    if (present.empty())
        return;
    registerUndo(ListUndo::InsertAt, Undo::How::Several, infos, present);
    takeOut(present, Notice::Observers);
}

void DocumentInfos::replaceAt(qsizetype index, const InfoPtr &info)
{
    const InfoPtr former = at(index);
    if (!former || !info)
        return;
    ++m_number;
    m_lookups.remove(*former);
    InfoOwnership::leave(former);
    m_ownership.keepOutside(former);
    m_ownership.adopt(info);
    m_infos.replace(index, info);
    m_lookups.insert(*info);
    listChanged(Notice::Observers);
    Q_EMIT replaced(index, former);
    Q_EMIT changedSilently();
}

void DocumentInfos::reorder(const InfoList &infos)
{
    const InfoList old = m_infos.exchange(infos);
    m_undoManager.registerOperation(Undo::ofReordering(*this, old, infos));
    bool areTheSame = old.size() == infos.size();
    for (const InfoPtr &info : old) {
        areTheSame &= info->listings() == 1;
        InfoOwnership::leave(info);
    }
    for (const InfoPtr &info : infos)
        m_ownership.adopt(info);
    // Undoing may bring back an order of other records: those that were removed as records come back at the
    // end, and what is undone by index after that meets others than it did.
    for (const InfoPtr &info : old) {
        if (info->listings() == 0) {
            areTheSame = false;
            m_ownership.keepOutside(info);
        }
    }
    if (!areTheSame)
        m_lookups.drop();
    listChanged(Notice::Observers);
    Q_EMIT reset();
}

void DocumentInfos::fieldHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old,
                                    std::size_t changes)
{
    m_lookups.fieldHasChanged(info, field, old, changes);
    InfoOwnership::tellSharers(info, &m_ownership);
}

IndexSet DocumentInfos::placesOf(const InfoList &infos) const
{
    constexpr std::size_t kFew = 8;
    const auto standsOnce = [](const InfoPtr &info) { return info->listings() <= 1; };
    if (infos.size() <= kFew && std::all_of(infos.begin(), infos.end(), standsOnce)) {
        std::vector<qsizetype> few;
        for (const InfoPtr &info : infos)
            few.push_back(placeOf(info.get()));
        std::erase(few, -1);
        return IndexSet(std::move(few));
    }
    QSet<const VXGlyphInfo *> wanted;
    for (const InfoPtr &info : infos)
        wanted.insert(info.get());
    IndexSet places;
    qsizetype place = 0;
    for (const InfoPtr &info : list()) {
        if (wanted.contains(info.get()))
            places.push_back(place);
        ++place;
    }
    return places;
}

void DocumentInfos::putIn(const InfoList &infos, const IndexSet &indexes, Notice notice)
{
    if (infos.empty())
        return;
    if (m_infos.isItself(infos)) {
        putIn(InfoList(infos), indexes, notice);
        return;
    }
    m_infos.makeRoomFor(infos.size());
    for (const InfoPtr &info : infos) {
        m_ownership.adopt(info);
        info->setNotAsRead();
    }
    m_infos.insert(infos, indexes);
    for (const InfoPtr &info : infos)
        m_lookups.insert(*info);
    listChanged(notice);
    Q_EMIT inserted(indexes);
}

void DocumentInfos::takeOut(const IndexSet &indexes, Notice notice)
{
    if (indexes.empty())
        return;
    for (const qsizetype place : indexes) {
        const InfoPtr &info = m_infos.at(place);
        m_lookups.remove(*info);
        InfoOwnership::leave(info);
        m_ownership.keepOutside(info);
    }
    InfoList leaving = m_infos.erase(indexes); // listeners may still look at them
    listChanged(notice);
    m_leaving.swap(leaving);
    Q_EMIT removed(indexes);
    m_leaving.swap(leaving);
}

void DocumentInfos::listChanged(Notice notice)
{
    m_ownership.noteListChanged();
    Q_EMIT revised();
    if (notice == Notice::Observers)
        Q_EMIT didChangeInfos();
}

} // namespace runebook
