#include "document/VXDocument.h"

// The info list of a document: every change registers its inverse, keeps the indexes in step, and is
// announced.

#include <QSet>
#include <algorithm>
#include <utility>

using namespace runebook;

namespace {

/// The documents of whose lists records belong to others, or to none.
std::vector<VXDocument *> &sharers()
{
    static auto &documents = *new std::vector<VXDocument *>; // the last of them may go after all statics
    return documents;
}

} // namespace

void VXDocument::noteSharing()
{
    if (!std::exchange(m_sharesRecords, true))
        sharers().push_back(this);
}

void VXDocument::leaveSharers()
{
    std::erase(sharers(), this);
}

void VXDocument::tellSharers(const VXGlyphInfo &info, const VXDocument *except)
{
    for (VXDocument *document : sharers()) {
        if (document == except)
            continue;
        if (document->m_listed.empty()) {
            for (const InfoPtr &listed : document->infos())
                document->m_listed.insert(listed.get());
        }
        if (!document->m_listed.contains(&info))
            continue;
        ++document->m_revision;
        document->noteSilentChange();
    }
}

template <typename Visit> void VXDocument::forEachBuiltIndex(Visit visit)
{
    for (InfoIndex *index : {&m_byName, &m_byUnicode, &m_byProduction}) {
        if (index->isBuilt())
            visit(*index);
    }
}

void VXDocument::adopt(const InfoPtr &info)
{
    if (info->listings() > 0 && info->document() != this) {
        // It stands in the list of a document that will not hear of its changes any more.
        noteSharing();
        if (auto *other = qobject_cast<VXDocument *>(info->documentObject()))
            other->noteSharing();
    }
    info->setDocument(this);
    info->setListings(info->listings() + 1);
}

void VXDocument::leave(const InfoPtr &info)
{
    info->setListings(qMax(0, info->listings() - 1));
}

bool VXDocument::isListedHere(const VXGlyphInfo &info) const
{
    if (!m_sharesRecords)
        return info.listings() > 0;
    return m_infos.placeOf(info, m_sharesRecords) >= 0;
}

void VXDocument::setDocumentOf(const InfoPtr &info, VXDocument *document)
{
    auto *before = qobject_cast<VXDocument *>(info->documentObject());
    if (before == document)
        return;
    if (info->listings() > 0) {
        for (VXDocument *each : {before, document}) {
            if (each)
                each->noteSharing();
        }
    }
    info->setDocument(document);
    if (document)
        document->addStray(info);
}

void VXDocument::release(const InfoPtr &info)
{
    if (info->document() == this)
        info->setDocument(nullptr);
}

void VXDocument::setInfos(InfoList infos)
{
    for (const InfoPtr &info : infos)
        info->setNotAsRead();
    install(std::move(infos));
    noteSilentChange();
}

void VXDocument::install(InfoList infos)
{
    for (const InfoPtr &info : this->infos()) {
        leave(info);
        release(info);
    }
    // Kept until all have heard: who shows the list still has its rows when it is told.
    const InfoList former = m_infos.exchange(std::move(infos));
    ++m_revision;
    m_listed.clear();
    for (const InfoPtr &info : this->infos())
        adopt(info);
    dropIndexes();
    Q_EMIT infosReset();
}

void VXDocument::dropIndexes()
{
    for (InfoIndex *index : {&m_byName, &m_byUnicode, &m_byProduction})
        index->drop();
}

InfoPtr VXDocument::objectInInfosAtIndex(qsizetype index) const
{
    return index >= 0 && index < countOfInfos() ? m_infos.at(index) : nullptr;
}

qsizetype VXDocument::indexOfObjectInInfos(const InfoPtr &info) const
{
    return placeOf(info.get());
}

qsizetype VXDocument::placeOf(const VXGlyphInfo *info) const
{
    return info ? m_infos.placeOf(*info, m_sharesRecords) : -1;
}

void VXDocument::addInfo(const InfoPtr &info)
{
    undoManager()->registerUndo([this, info] { removeInfo(info); });
    insertAt({info}, {countOfInfos()}, Notice::Observers);
}

void VXDocument::addInfos(const InfoList &infos)
{
    // What cannot be had fails before anything is changed.
    m_infos.makeRoomFor(infos.size());
    undoManager()->registerUndo([this, infos] { removeInfos(infos); });
    insertAt(infos, IndexSet::run(countOfInfos(), infos.size()), Notice::Observers);
}

void VXDocument::removeInfo(const InfoPtr &info)
{
    undoManager()->registerUndo([this, info] { addInfo(info); });
    removeAt(placesOf({info}), Notice::Quiet);
}

void VXDocument::removeInfos(const InfoList &infos)
{
    undoManager()->registerUndo([this, infos] { addInfos(infos); });
    removeAt(placesOf(infos), Notice::Quiet);
}

void VXDocument::insertObjectInInfosAtIndex(const InfoPtr &info, qsizetype index)
{
    const qsizetype place = qBound<qsizetype>(0, index, countOfInfos());
    undoManager()->registerUndo([this, place] { removeObjectFromInfosAtIndex(place); });
    insertAt({info}, {place}, Notice::Observers);
}

void VXDocument::insertObjectsInInfosAtIndexes(const InfoList &infos, const IndexSet &indexes)
{
    if (infos.empty() || infos.size() != indexes.size())
        return;
    m_infos.makeRoomFor(infos.size());
    // An index beyond the end means the end; undoing has to know which place that was.
    IndexSet places;
    places.reserve(indexes.size());
    for (const qsizetype index : indexes) {
        const auto before = static_cast<qsizetype>(places.size());
        places.push_back(qBound(before, index, countOfInfos() + before));
    }
    undoManager()->registerUndo([this, places] { removeObjectsFromInfosAtIndexes(places); });
    insertAt(infos, places, Notice::Observers);
}

void VXDocument::removeObjectFromInfosAtIndex(qsizetype index)
{
    const InfoPtr info = objectInInfosAtIndex(index);
    if (!info)
        return;
    undoManager()->registerUndo([this, info, index] { insertObjectInInfosAtIndex(info, index); });
    removeAt({index}, Notice::Observers);
    release(info);
    if (info->listings() > 0)
        noteSharing();
}

void VXDocument::removeObjectsFromInfosAtIndexes(const IndexSet &indexes)
{
    IndexSet present;
    InfoList infos;
    for (const qsizetype index : indexes) {
        if (const InfoPtr info = objectInInfosAtIndex(index)) {
            present.push_back(index);
            infos.push_back(info);
        }
    }
    if (present.empty())
        return;
    undoManager()->registerUndo([this, infos, present] { insertObjectsInInfosAtIndexes(infos, present); });
    removeAt(present, Notice::Observers);
}

void VXDocument::replaceObjectInInfosAtIndexWithObject(qsizetype index, const InfoPtr &info)
{
    const InfoPtr former = objectInInfosAtIndex(index);
    if (!former || !info)
        return;
    forEachBuiltIndex([&former](InfoIndex &each) { each.remove(*former); });
    leave(former);
    addStray(former);
    adopt(info);
    m_infos.replace(index, info);
    forEachBuiltIndex([&info](InfoIndex &each) { each.insert(*info); });
    listChanged(Notice::Observers);
    Q_EMIT infoReplaced(index, former);
    noteSilentChange();
}

void VXDocument::reorderInfos(const InfoList &infos)
{
    const InfoList old = m_infos.exchange(infos);
    undoManager()->registerUndo([this, old] { reorderInfos(old); });
    bool areTheSame = old.size() == infos.size();
    for (const InfoPtr &info : old) {
        areTheSame &= info->listings() == 1;
        leave(info);
    }
    for (const InfoPtr &info : infos)
        adopt(info);
    // Undoing may bring back an order of other records: those taken out by removeInfo come back at the end,
    // and what is undone by index after that meets others than it did.
    for (const InfoPtr &info : old) {
        if (info->listings() == 0) {
            areTheSame = false;
            addStray(info);
        }
    }
    if (!areTheSame)
        dropIndexes();
    listChanged(Notice::Observers);
    Q_EMIT infosReset();
}

IndexSet VXDocument::placesOf(const InfoList &infos) const
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
    for (const InfoPtr &info : this->infos()) {
        if (wanted.contains(info.get()))
            places.push_back(place);
        ++place;
    }
    return places;
}

void VXDocument::insertAt(const InfoList &infos, const IndexSet &indexes, Notice notice)
{
    if (infos.empty())
        return;
    if (m_infos.isItself(infos)) {
        insertAt(InfoList(infos), indexes, notice);
        return;
    }
    m_infos.makeRoomFor(infos.size());
    for (const InfoPtr &info : infos) {
        adopt(info);
        info->setNotAsRead();
    }
    m_infos.insert(infos, indexes);
    forEachBuiltIndex([&infos](InfoIndex &index) {
        for (const InfoPtr &info : infos)
            index.insert(*info);
    });
    listChanged(notice);
    Q_EMIT infosInserted(indexes);
}

void VXDocument::removeAt(const IndexSet &indexes, Notice notice)
{
    if (indexes.empty())
        return;
    for (const qsizetype place : indexes) {
        const InfoPtr &info = m_infos.at(place);
        forEachBuiltIndex([&info](InfoIndex &index) { index.remove(*info); });
        leave(info);
        addStray(info);
    }
    InfoList leaving = m_infos.erase(indexes); // listeners may still look at them
    listChanged(notice);
    m_leaving.swap(leaving);
    Q_EMIT infosRemoved(indexes);
    m_leaving.swap(leaving);
}

void VXDocument::addStray(const InfoPtr &info)
{
    constexpr std::size_t kFewest = 64;
    if (m_strays.size() >= std::max(kFewest, m_nextStraysCleaning)) {
        std::erase_if(m_strays, [](const std::weak_ptr<VXGlyphInfo> &stray) { return stray.expired(); });
        m_nextStraysCleaning = 2 * m_strays.size();
    }
    m_strays.push_back(info);
}

void VXDocument::listChanged(Notice notice)
{
    ++m_revision;
    m_listed.clear();
    if (notice == Notice::Observers)
        Q_EMIT didChangeInfos();
}
