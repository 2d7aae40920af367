#include "platform/Autosaver.h"

#include "platform/Background.h"
#include "platform/DocumentController.h"
#include "platform/FileSaver.h"

#include <QCoreApplication>
#include <QFile>
#include <QUuid>
#include <mutex>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::microseconds kSlice {6000};
constexpr std::size_t kBlock = 1 << 20;

QString noteOf(const QString &path)
{
    return path.chopped(AutosaveFolder::kContentSuffix.size()) + AutosaveFolder::kNoteSuffix;
}

bool writeNote(const QString &path, const AutosaveNote &note, Error *error)
{
    const QByteArray json = note.toJson();
    return FileSaver::replace(
        noteOf(path),
        [&json](const BlockSink &sink, Error *) {
            return sink({json.constData(), static_cast<std::size_t>(json.size())});
        },
        error);
}

} // namespace

/// What a thread writes. It outlives the document if it has to, and then leaves nothing behind.
struct Autosaver::Writing {
    QString path;
    std::vector<std::string> blocks;
    AutosaveNote note;
    std::mutex mutex; ///< between giving the files their names and taking them away
    bool isGivenUp = false;

    bool write(Error *error)
    {
        // Into a file that nobody takes for the content, however long the disk takes.
        const QString fresh = path + ".writing"_L1;
        const ContentProducer produce = [this](const BlockSink &sink, Error *) {
            return std::all_of(blocks.begin(), blocks.end(), sink);
        };
        const bool isWritten = FileSaver::replace(fresh, produce, error, FileSaver::Wait::UntilOnDisk);
        const std::lock_guard guard(mutex);
        if (isWritten && !isGivenUp && writeNote(path, note, error)) {
            if (std::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(path).constData()) == 0)
                return true;
            fail(error, {u"SaveError"_s, errno, {}, qt_error_string(errno), {}});
        }
        QFile::remove(fresh);
        return false;
    }
};

Autosaver::Autosaver(Document &document) : m_document(document)
{
    m_delayTimer.setSingleShot(true);
    connect(&m_delayTimer, &QTimer::timeout, this, &Autosaver::start);
    connect(&m_sliceTimer, &QTimer::timeout, this, &Autosaver::printSlice);
}

Autosaver::~Autosaver()
{
    giveUp();
}

void Autosaver::schedule()
{
    const double delay = DocumentController::shared().autosavingDelay();
    if (delay > 0 && m_document.isDocumentEdited())
        m_delayTimer.start(static_cast<int>(delay * 1000));
}

AutosaveNote Autosaver::note() const
{
    FileWatch &watch = m_document.fileWatch();
    return {m_document.fileURL(),
            m_document.fileType(),
            m_document.displayName(),
            watch.known(),
            watch.knownHash(),
            QDateTime::currentDateTimeUtc(),
            QCoreApplication::applicationPid()};
}

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

bool Autosaver::saveNow(Error *error)
{
    giveUp();
    return ensurePath(error) && writeNote(m_path, note(), error)
        && m_document.writeToURLOfType(m_path, m_document.autosavingFileType(), error);
}

void Autosaver::start()
{
    if (!m_document.isDocumentEdited())
        return;
    if (m_writing) {
        schedule(); // the disk is slow
        return;
    }
    Error error;
    m_content = m_document.slicedContent();
    m_blocks.clear();
    if (m_content) {
        m_sliceTimer.start(0);
    } else {
        const bool isSaved = saveNow(&error);
        if (!isSaved)
            tellOnce(error);
        m_isFailureTold = m_isFailureTold && !isSaved;
        Q_EMIT finished(isSaved);
    }
}

void Autosaver::printSlice()
{
    SlicedContent::Progress progress = SlicedContent::Progress::Outdated;
    try {
        if (m_blocks.empty() || m_blocks.back().size() >= kBlock)
            m_blocks.emplace_back().reserve(kBlock + kBlock / 4);
        progress = m_content->printMore(m_blocks.back(), kSlice);
    } catch (const std::bad_alloc &) {
        tellOnce({u"SaveError"_s,
                  ENOMEM,
                  tr("“%1” could not be autosaved.").arg(m_document.displayName()),
                  tr("There is not enough memory for it."),
                  {}});
    }
    if (progress == SlicedContent::Progress::Unfinished)
        return;
    m_sliceTimer.stop();
    m_content.reset();
    if (progress == SlicedContent::Progress::Finished) {
        write();
        return;
    }
    m_blocks.clear();
    schedule();
}

void Autosaver::write()
{
    Error error;
    if (!ensurePath(&error)) {
        m_blocks.clear();
        tellOnce(error);
        Q_EMIT finished(false);
        return;
    }
    m_writing = std::make_shared<Writing>();
    m_writing->path = m_path;
    m_writing->blocks = std::exchange(m_blocks, {});
    m_writing->note = note();
    runInBackground([this, writing = m_writing] {
        Error reason;
        writing->write(&reason);
        const std::lock_guard guard(writing->mutex);
        writing->blocks = {};
        if (!writing->isGivenUp)
            QMetaObject::invokeMethod(
                this, [this, writing, reason] { finish(writing, reason); }, Qt::QueuedConnection);
    });
}

void Autosaver::finish(const std::shared_ptr<Writing> &writing, const Error &error)
{
    if (writing != m_writing)
        return;
    m_writing.reset();
    if (!error.domain.isEmpty())
        tellOnce(error);
    else
        m_isFailureTold = false;
    Q_EMIT finished(error.domain.isEmpty());
}

void Autosaver::giveUp()
{
    m_delayTimer.stop();
    m_sliceTimer.stop();
    m_content.reset();
    m_blocks.clear();
    if (const std::shared_ptr<Writing> writing = std::exchange(m_writing, {})) {
        const std::lock_guard guard(writing->mutex);
        writing->isGivenUp = true;
    }
}

void Autosaver::remove()
{
    giveUp();
    if (!m_path.isEmpty()) {
        QFile::remove(m_path);
        QFile::remove(noteOf(m_path));
    }
    m_path.clear();
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
