#include "platform/documents/Autosaver.h"

#include "platform/Background.h"
#include "platform/TurningWindows.h"
#include "platform/documents/FileSaver.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QPointer>
#include <QUuid>
#include <algorithm>
#include <atomic>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::microseconds kSlice {6000};
constexpr std::chrono::microseconds kAtOnce = std::chrono::seconds(1);
constexpr std::size_t kBlock = 1 << 20;

bool replaceBy(const QString &path, const QByteArray &bytes, Error *error)
{
    return FileSaver::replace(
        path,
        [&bytes](const BlockSink &sink, Error *) {
            return sink({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        },
        error);
}

bool writeNote(const QString &contentPath, const AutosaveNote &note, Error *error)
{
    return replaceBy(AutosaveFolder::besideContent(contentPath, AutosaveFolder::kNoteSuffix), note.toJson(),
                     error);
}

/// Keeps what stands in editors beside the content; without any there is no such file.
bool writeTyped(const QString &contentPath, const QJsonArray &typed, Error *error)
{
    const QString path = AutosaveFolder::besideContent(contentPath, AutosaveFolder::kTypedSuffix);
    if (!typed.isEmpty())
        return replaceBy(path, QJsonDocument(typed).toJson(QJsonDocument::Compact), error);
    QFile::remove(path);
    return true;
}

/// Takes the name away. A large file's room on the disk is given back by another thread, as that takes long:
/// the system does so when the last one closes the file.
void removeAtOnce(const QString &path)
{
    const int file =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    QFile::remove(path);
    if (file >= 0)
        runInBackground([file] { ::close(file); });
}

std::chrono::milliseconds seconds(double count)
{
    return std::chrono::milliseconds(static_cast<qint64>(count * 1000));
}

} // namespace

/// What a thread writes. It outlives the document if it has to, and then leaves nothing behind.
struct Autosaver::Writing {
    QString path;
    std::unique_ptr<SlicedContent> content; ///< what it was printed from; the main thread's
    bool hasContent = true; ///< otherwise only what was typed is new
    std::vector<std::string> blocks;
    ContentProducer rest; ///< behind the blocks; null when there is nothing more
    AutosaveNote note;
    QJsonArray typed;
    std::mutex mutex; ///< between giving the files their names and taking them away
    bool isGivenUp = false;

    bool write(Error *error)
    {
        // Into a file that nobody takes for the content, however long the disk takes; one that was given up
        // may still be at its own.
        static std::atomic<int> count = 0;
        const QString fresh = path + u'.' + QString::number(++count) + ".writing"_L1;
        const ContentProducer produce = [this](const BlockSink &sink, Error *reason) {
            return std::all_of(blocks.begin(), blocks.end(), sink) && (!rest || rest(sink, reason));
        };
        const bool isWritten =
            !hasContent || FileSaver::replace(fresh, produce, error, FileSaver::Wait::UntilOnDisk);
        const std::lock_guard guard(mutex);
        // What was typed goes first: it is told apart by the names of its records, an older content's too.
        if (isWritten && !isGivenUp && writeTyped(path, typed, error) && writeNote(path, note, error)) {
            if (!hasContent
                || std::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(path).constData())
                    == 0)
                return true;
            fail(error, {u"SaveError"_s, errno, {}, qt_error_string(errno), {}});
        }
        if (hasContent)
            QFile::remove(fresh);
        return false;
    }
};

Autosaver::Autosaver(AutosaveSubject &document) : m_document(document)
{
    for (QTimer *timer : {&m_quietTimer, &m_latestTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        connect(timer, &QTimer::timeout, this, &Autosaver::start);
    }
    connect(&m_sliceTimer, &QTimer::timeout, this, &Autosaver::printSlice);
}

Autosaver::~Autosaver()
{
    giveUp();
}

// When

void Autosaver::schedule()
{
    if (AutosaveTimes::shared().delay <= 0)
        return;
    if (!m_changedAt)
        m_changedAt = Clock::now();
    armTimers();
}

/// How long a change may wait for the beginning of its autosave, so that it is on the disk in time.
std::chrono::milliseconds Autosaver::patience() const
{
    const auto bound = seconds(AutosaveTimes::shared().bound);
    // The disk may be slower the next time than it was the last time.
    const std::chrono::milliseconds reserve = bound / 4 + 2 * m_lastDuration;
    return std::max(bound - reserve, bound / 5);
}

bool Autosaver::isOverdue() const
{
    return m_changedAt && Clock::now() - *m_changedAt >= patience();
}

void Autosaver::armTimers()
{
    const auto quiet =
        std::min(seconds(AutosaveTimes::shared().delay), seconds(AutosaveTimes::shared().bound));
    m_quietTimer.start(quiet);
    if (m_latestTimer.isActive() || !m_changedAt)
        return;
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - *m_changedAt);
    m_latestTimer.start(std::max(patience() - waited, 0ms));
}

bool Autosaver::isUpToDate() const
{
    return isContentUpToDate() && m_saved.typed == m_document.pendingTexts();
}

// What

bool Autosaver::ensurePath(Error *error)
{
    if (!m_path.isEmpty())
        return true;
    const QString folder = AutosaveFolder::own(error);
    if (folder.isEmpty())
        return false;
    m_path =
        folder + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + AutosaveFolder::kContentSuffix;
    return true;
}

/// Writes \a content, which is current; where there is none, what the document writes as a whole.
bool Autosaver::writeContent(SlicedContent *content, Error *error)
{
    if (!content)
        return m_document.writeAutosave(m_path, error);
    const auto produce = [content](const BlockSink &sink, Error *reason) {
        auto progress = SlicedContent::Progress::Unfinished;
        while (progress == SlicedContent::Progress::Unfinished) {
            std::string block;
            block.reserve(kBlock + kBlock / 4);
            progress = content->printMore(block, kAtOnce);
            if (!sink(block))
                return false;
        }
        const ContentProducer rest = content->takeRest();
        return progress == SlicedContent::Progress::Finished && (!rest || rest(sink, reason));
    };
    bool isWritten = false;
    doApart(content->size(), [&] { isWritten = FileSaver::replace(m_path, produce, error); });
    return isWritten;
}

bool Autosaver::saveNow(Error *error)
{
    giveUp();
    if (!ensurePath(error))
        return false;
    const QJsonArray typed = m_document.pendingTexts();
    if (!writeTyped(m_path, typed, error) || !writeNote(m_path, m_document.autosaveNote(), error))
        return false;
    if (!isContentUpToDate()) {
        std::unique_ptr<SlicedContent> content = m_document.slicedContent();
        m_saved = {};
        if (!writeContent(content.get(), error))
            return false;
        m_saved.content = std::move(content);
    }
    m_saved.typed = typed;
    m_changedAt.reset();
    return true;
}

void Autosaver::saveBeforeRun()
{
    if (AutosaveTimes::shared().delay <= 0 || !m_document.hasUnsavedWork() || isUpToDate())
        return;
    const TurningWindows turning(
        tr("Keeping the changes to “%1” before the run…").arg(m_document.displayName()),
        m_document.windowController());
    writeAtOnce();
}

void Autosaver::writeAtOnce()
{
    Error error;
    const bool isSaved = saveNow(&error);
    if (!isSaved)
        tellOnce(error);
    end(isSaved);
}

void Autosaver::start()
{
    if (m_content || m_writing)
        return; // what has changed since then is looked at when that has ended
    m_quietTimer.stop();
    m_latestTimer.stop();
    if (!m_document.hasUnsavedWork())
        remove();
    else if (isContentUpToDate())
        write();
    else
        beginPrinting();
}

void Autosaver::beginPrinting()
{
    m_printedSince = Clock::now();
    m_content = m_document.slicedContent();
    m_blocks.clear();
    if (m_content)
        m_sliceTimer.start(0);
    else
        writeAtOnce();
}

void Autosaver::captureWhatIsDue()
{
    if (AutosaveTimes::shared().delay <= 0 || m_writing || !m_document.isDocumentEdited()
        || isContentUpToDate())
        return;
    if (!m_changedAt)
        m_changedAt = Clock::now();
    if (!isOverdue())
        return;
    dropPrinted();
    m_printedSince = Clock::now();
    m_content = m_document.slicedContent();
    if (m_content)
        printAtOnce();
    else
        writeAtOnce();
}

void Autosaver::printSlice()
{
    SlicedContent::Progress progress = SlicedContent::Progress::Outdated;
    try {
        if (m_blocks.empty() || m_blocks.back().size() >= kBlock)
            m_blocks.emplace_back().reserve(kBlock + kBlock / 4);
        progress = m_content->printMore(m_blocks.back(), kSlice);
    } catch (const std::bad_alloc &) {
        tellLackOfMemory();
    }
    if (progress == SlicedContent::Progress::Unfinished)
        return;
    if (progress == SlicedContent::Progress::Finished) {
        m_sliceTimer.stop();
        write();
        return;
    }
    dropPrinted();
    // Somebody changes the document faster than it can be printed in slices.
    if (isOverdue()) {
        m_content = m_document.slicedContent();
        printAtOnce();
    } else {
        schedule();
    }
}

void Autosaver::printAtOnce()
{
    SlicedContent::Progress progress = SlicedContent::Progress::Unfinished;
    try {
        while (progress == SlicedContent::Progress::Unfinished) {
            if (m_blocks.empty() || m_blocks.back().size() >= kBlock)
                m_blocks.emplace_back().reserve(kBlock + kBlock / 4);
            progress = m_content->printMore(m_blocks.back(), kAtOnce);
        }
        write();
    } catch (const std::bad_alloc &) {
        dropPrinted();
        m_changedAt.reset(); // not again with every turn
        tellLackOfMemory();
    }
}

void Autosaver::dropPrinted()
{
    m_sliceTimer.stop();
    m_content.reset();
    m_blocks.clear();
}

void Autosaver::tellLackOfMemory()
{
    tellOnce({u"SaveError"_s,
              ENOMEM,
              tr("“%1” could not be autosaved.").arg(m_document.displayName()),
              tr("There is not enough memory for it."),
              {}});
}

/// Hands what was printed, if anything, and what is being typed to another thread.
void Autosaver::write()
{
    Error error;
    if (!ensurePath(&error)) {
        dropPrinted();
        tellOnce(error);
        end(false);
        return;
    }
    if (!m_content)
        m_printedSince = Clock::now();
    m_changedAt.reset();
    m_writing = std::make_shared<Writing>();
    m_writing->path = m_path;
    m_writing->hasContent = m_content != nullptr;
    m_writing->rest = m_content ? m_content->takeRest() : ContentProducer();
    m_writing->content = std::move(m_content);
    m_writing->blocks = std::exchange(m_blocks, {});
    m_writing->note = m_document.autosaveNote();
    m_writing->typed = m_document.pendingTexts();
    runInBackground([this, writing = m_writing] {
        Error reason;
        writing->write(&reason);
        const std::lock_guard guard(writing->mutex);
        writing->blocks = {};
        writing->rest = {};
        if (writing->isGivenUp)
            return;
        runOnMainThread([self = QPointer<Autosaver>(this), writing, reason] {
            if (self)
                self->finish(writing, reason);
        });
    });
}

void Autosaver::finish(const std::shared_ptr<Writing> &writing, const Error &error)
{
    if (writing != m_writing)
        return;
    m_writing.reset();
    if (error.domain.isEmpty()) {
        if (writing->hasContent)
            m_saved.content = std::move(writing->content);
        m_saved.typed = writing->typed;
        m_lastDuration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_printedSince);
    } else {
        tellOnce(error);
    }
    end(error.domain.isEmpty());
}

/// What was begun has ended. What has changed meanwhile, or could not be written, has its turn again.
void Autosaver::end(bool isSaved)
{
    m_isFailureTold = m_isFailureTold && !isSaved;
    if (m_changedAt || (!isSaved && m_document.hasUnsavedWork()))
        schedule();
    Q_EMIT finished(isSaved);
}

void Autosaver::giveUp()
{
    m_quietTimer.stop();
    m_latestTimer.stop();
    dropPrinted();
    if (const std::shared_ptr<Writing> writing = std::exchange(m_writing, {})) {
        const std::lock_guard guard(writing->mutex);
        writing->isGivenUp = true;
        // The files may be there already, or half of them.
        m_saved = {};
    }
}

void Autosaver::remove()
{
    giveUp();
    if (!m_path.isEmpty()) {
        removeAtOnce(m_path);
        for (const QLatin1StringView suffix : {AutosaveFolder::kNoteSuffix, AutosaveFolder::kTypedSuffix})
            QFile::remove(AutosaveFolder::besideContent(m_path, suffix));
    }
    m_path.clear();
    m_saved = {};
    m_changedAt.reset();
}

void Autosaver::tellOnce(const Error &error)
{
    if (std::exchange(m_isFailureTold, true))
        return;
    Error told = error;
    told.domain = u"AutosaveError"_s;
    told.description = tr("Changes to “%1” could not be autosaved. They are only in the window.")
                           .arg(m_document.displayName());
    ErrorPresenter::shared().present(told);
}

} // namespace runebook
