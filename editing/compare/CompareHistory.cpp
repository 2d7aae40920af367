#include "editing/compare/CompareHistory.h"

#include "platform/UndoManager.h"
#include "platform/documents/DocumentController.h"

#include <algorithm>

namespace runebook {

namespace {

/// The one of two documents that are both asked about which stands further in front.
VXDocument *frontOne(VXDocument *left, VXDocument *right)
{
    const QList<Document *> &order = DocumentController::shared().documentList();
    return order.indexOf(right) < order.indexOf(left) ? right : left;
}

} // namespace

void CompareHistory::follow(VXDocument *document)
{
    std::erase_if(m_tracks, [](const std::unique_ptr<Track> &track) { return !track->document; });
    if (!document || trackOf(document))
        return;
    m_tracks.push_back(std::make_unique<Track>());
    Track *track = m_tracks.back().get();
    track->document = document;
    track->index = document->undoManager()->stack()->index();
    connect(document->undoManager(), &UndoManager::changed, this, [this, document] {
        if (Track *followed = trackOf(document))
            note(*followed);
        Q_EMIT changed();
    });
    const auto touched = [this, document] { noteChange(document); };
    connect(document, &VXDocument::infosChanged, this, touched);
    connect(document, &VXDocument::infosInserted, this, touched);
    connect(document, &VXDocument::infosRemoved, this, touched);
}

CompareHistory::Track *CompareHistory::trackOf(const VXDocument *document) const
{
    const auto found = std::find_if(m_tracks.begin(), m_tracks.end(),
                                    [document](const auto &track) { return track->document == document; });
    return found == m_tracks.end() ? nullptr : found->get();
}

void CompareHistory::note(Track &track)
{
    UndoManager *manager = track.document->undoManager();
    const int index = manager->stack()->index();
    const auto size = static_cast<std::size_t>(std::max({index, track.index, manager->stack()->count()}));
    track.done.resize(size);
    track.undone.resize(size);
    const bool isNew = track.open > 0; // one that was undone is none that begins
    for (int i = track.index; i < index; ++i)
        track.done[static_cast<std::size_t>(i)] = isNew ? track.open : ++m_clock;
    if (isNew && index > track.index)
        track.newest = track.open;
    for (int i = track.index; i > index; --i)
        track.undone[static_cast<std::size_t>(i - 1)] = ++m_clock;
    track.open = manager->lastOperation() ? ++m_clock : 0;
    track.index = index;
}

/// A script's run is one step in each document, be the first of its changes long ago.
void CompareHistory::noteChange(const VXDocument *document)
{
    Track *track = trackOf(document);
    if (track && track->open > 0)
        track->open = ++m_clock;
}

quint64 CompareHistory::lastDone(const VXDocument &document) const
{
    const Track *track = trackOf(&document);
    if (!track)
        return 0;
    if (track->document->undoManager()->lastOperation())
        return track->open;
    const auto index = static_cast<std::size_t>(track->index);
    return index > 0 && index <= track->done.size() ? track->done[index - 1] : 0;
}

quint64 CompareHistory::lastUndone(const VXDocument &document) const
{
    const Track *track = trackOf(&document);
    const auto index = static_cast<std::size_t>(track ? track->index : 0);
    return track && index < track->undone.size() ? track->undone[index] : 0;
}

quint64 CompareHistory::newestIn(const VXDocument *document) const
{
    const Track *track = trackOf(document);
    return track ? std::max(track->newest, track->open) : 0;
}

VXDocument *CompareHistory::toUndo(VXDocument *left, VXDocument *right) const
{
    const bool ofLeft = left && left->undoManager()->canUndo();
    const bool ofRight = right && right->undoManager()->canUndo();
    if (!ofLeft || !ofRight)
        return ofLeft ? left : ofRight ? right : nullptr;
    const quint64 a = lastDone(*left);
    const quint64 b = lastDone(*right);
    return a == b ? frontOne(left, right) : a > b ? left : right;
}

VXDocument *CompareHistory::toRedo(VXDocument *left, VXDocument *right) const
{
    const quint64 newest = std::max(newestIn(left), newestIn(right));
    const auto isOffered = [this, newest](VXDocument *document) {
        return document && document->undoManager()->canRedo() && lastUndone(*document) >= newest;
    };
    const bool ofLeft = isOffered(left);
    const bool ofRight = isOffered(right);
    if (!ofLeft || !ofRight)
        return ofLeft ? left : ofRight ? right : nullptr;
    const quint64 a = lastUndone(*left);
    const quint64 b = lastUndone(*right);
    return a == b ? frontOne(left, right) : a > b ? left : right;
}

} // namespace runebook
