#pragma once

#include "document/VXDocument.h"

#include <QPointer>
#include <memory>
#include <vector>

namespace runebook {

/// The order in which the steps of several documents were taken, each of which has a history of its own: so a
/// window that shows two of them can undo what was done last in either.
class CompareHistory : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Follows a document from now on. Of what was done in it before, only the order within it is known.
    void follow(VXDocument *document);
    /// Which of the two has the step that was taken last, or null when neither has one. Where nobody knows,
    /// it is the one further in front.
    VXDocument *toUndo(VXDocument *left, VXDocument *right) const;
    /// Which of the two has the step that was undone last, or null when there is none or a new step was taken
    /// in either since: what that follows does not come back behind it.
    VXDocument *toRedo(VXDocument *left, VXDocument *right) const;

Q_SIGNALS:
    void changed();

private:
    struct Track {
        QPointer<VXDocument> document;
        std::vector<quint64> done; ///< by step, when it was taken; 0 for before
        std::vector<quint64> undone;
        quint64 open = 0; ///< when the step that is still open last changed something; 0: none is
        quint64 newest = 0; ///< when a step was taken that had not been undone before
        int index = 0;
    };

    Track *trackOf(const VXDocument *document) const;
    void note(Track &track);
    void noteChange(const VXDocument *document);
    quint64 lastDone(const VXDocument &document) const;
    quint64 lastUndone(const VXDocument &document) const;
    quint64 newestIn(const VXDocument *document) const;

    std::vector<std::unique_ptr<Track>> m_tracks;
    quint64 m_clock = 0;
};

} // namespace runebook
