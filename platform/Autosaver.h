#pragma once

#include "platform/AutosaveFolder.h"
#include "platform/SlicedContent.h"

#include <QObject>
#include <QTimer>
#include <memory>
#include <vector>

namespace runebook {

class Document;

/// Keeps the unsaved content of one document in a file of its own, with a note of where it belongs. The
/// content is printed on the main thread in slices of a few milliseconds and written by another thread.
class Autosaver : public QObject
{
    Q_OBJECT
public:
    explicit Autosaver(Document &document);
    ~Autosaver() override;

    /// Autosaves when nobody has changed anything for the time that the controller says; failures are told
    /// once.
    void schedule();
    /// Starts now what schedule() starts later.
    void start();
    /// Writes at once and waits for it.
    bool saveNow(Error *error);
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

    bool ensurePath(Error *error);
    AutosaveNote note() const;
    void printSlice();
    void write();
    void finish(const std::shared_ptr<Writing> &writing, const Error &error);
    void giveUp();
    void tellOnce(const Error &error);

    Document &m_document;
    QTimer m_delayTimer;
    QTimer m_sliceTimer;
    QString m_path;
    std::unique_ptr<SlicedContent> m_content; ///< while it is printed
    std::vector<std::string> m_blocks; ///< what was printed
    std::shared_ptr<Writing> m_writing; ///< while another thread is at it
    bool m_isFailureTold = false;
};

} // namespace runebook
