#pragma once

#include "platform/documents/AutosaveSubject.h"

#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace runebook {

/// Keeps the unsaved content of one document in a file of its own, with a note of where it belongs, and
/// beside it what stands in the document's editors. The content is printed on the main thread in slices of a
/// few milliseconds and written by another thread. That happens when nobody has changed anything for the time
/// that the controller says, and early enough that no change waits longer for the disk than the controller's
/// bound while changes go on.
class Autosaver : public QObject
{
    Q_OBJECT
public:
    explicit Autosaver(AutosaveSubject &document);
    ~Autosaver() override;

    /// Something has changed, or was typed. Failures of what follows are told once.
    void schedule();
    /// Starts now what schedule() starts later.
    void start();
    /// The same for the middle of a script, when neither timers nor slices have their turn: looks whether a
    /// change has waited long enough, prints at once and lets another thread write.
    void captureWhatIsDue();
    /// Writes at once and waits for it.
    bool saveNow(Error *error);
    /// The same unless what lies there is up to date, or the user wants no autosaving.
    void saveBeforeRun();
    /// The file; empty while nothing was autosaved.
    const QString &path() const { return m_path; }
    /// Takes the file away, and gives up what is going on.
    void remove();
    /// Whether something is being printed or written.
    bool isBusy() const { return m_content || m_writing; }

Q_SIGNALS:
    /// What start() began has ended.
    void finished(bool isSaved);

private:
    struct Writing;
    using Clock = std::chrono::steady_clock;

    /// A state of the document that lies on the disk.
    struct Saved {
        std::unique_ptr<SlicedContent> content; ///< knows whether it is still the document's
        QJsonArray typed;
    };

    bool ensurePath(Error *error);
    bool writeContent(SlicedContent *content, Error *error);
    bool isContentUpToDate() const { return m_saved.content && m_saved.content->isCurrent(); }
    bool isUpToDate() const;
    std::chrono::milliseconds patience() const;
    bool isOverdue() const;
    void armTimers();
    void beginPrinting();
    void printSlice();
    void printAtOnce();
    void dropPrinted();
    void tellLackOfMemory();
    void write();
    void writeAtOnce();
    void finish(const std::shared_ptr<Writing> &writing, const Error &error);
    void end(bool isSaved);
    void giveUp();
    void tellOnce(const Error &error);

    AutosaveSubject &m_document;
    QTimer m_quietTimer; ///< runs anew at every change
    QTimer m_latestTimer; ///< runs from the first change on
    QTimer m_sliceTimer;
    QString m_path;
    std::unique_ptr<SlicedContent> m_content; ///< while it is printed
    std::vector<std::string> m_blocks; ///< what was printed
    std::shared_ptr<Writing> m_writing; ///< while another thread is at it
    Saved m_saved;
    /// Of the first change that no finished printing contains.
    std::optional<Clock::time_point> m_changedAt;
    Clock::time_point m_printedSince; ///< when the last printing began
    std::chrono::milliseconds m_lastDuration {0}; ///< from then until it was on the disk
    bool m_isFailureTold = false;
};

} // namespace runebook
