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
        for (const std::unique_ptr<Track> &each : m_tracks) {
            if (each->document == document)
                note(*each);
        }
        Q_EMIT changed();
    });
}

const CompareHistory::Track *CompareHistory::trackOf(const VXDocument *document) const
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
    for (int i = track.index; i < index; ++i)
        track.done[static_cast<std::size_t>(i)] = ++m_clock;
    for (int i = track.index; i > index; --i)
        track.undone[static_cast<std::size_t>(i - 1)] = ++m_clock;
    if (manager->lastOperation())
        track.open = ++m_clock;
    track.index = index;
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
    const bool ofLeft = left && left->undoManager()->canRedo();
    const bool ofRight = right && right->undoManager()->canRedo();
    if (!ofLeft || !ofRight)
        return ofLeft ? left : ofRight ? right : nullptr;
    const quint64 a = lastUndone(*left);
    const quint64 b = lastUndone(*right);
    return a == b ? frontOne(left, right) : a > b ? left : right;
}

} // namespace runebook
