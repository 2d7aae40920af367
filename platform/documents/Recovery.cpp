#include "platform/documents/Recovery.h"

#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/RescueFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

const QString kContentType = u"public.xml"_s;

// What stands in editors at one time: longer texts than a person has ever put into one, and no more than can
// be read while somebody waits.
constexpr qint64 kLongestTyped = 256 << 20;

QByteArray bytesOf(const QString &path)
{
    constexpr qint64 kLongestNote = 1 << 20;
    return bytesOfSmallFile(path, kLongestNote, Links::Refuse).value_or(QByteArray());
}

/// Whether the file was written to since the content was autosaved; one that was only touched was not.
bool hasChanged(const QString &path, const AutosaveNote &note)
{
    const FileState now = FileState::of(path);
    if (path.isEmpty() || now == note.original)
        return false;
    if (now.size != note.original.size)
        return true;
    return !note.originalHash || contentHash(path) != note.originalHash;
}

Error readError(const QString &path, const Error &reason)
{
    return {u"OpenError"_s, 4, Recovery::tr("“%1” could not be restored.").arg(path),
            reason.failureReason.isEmpty() ? reason.description : reason.failureReason,
            Recovery::tr("It stays where it is.")};
}

/// A document with the content of the file, not yet among the open ones. \a isWhole is given for autosaved
/// contents, whose form is one of their own.
std::unique_ptr<Document> documentOf(const QString &path, const QString &type, Error *error,
                                     bool *isWhole = nullptr)
{
    std::unique_ptr<Document> document(DocumentController::shared().makeDocument());
    Error reason;
    const bool isRead = isWhole ? document->readAutosavedContents(path, isWhole, &reason)
                                : document->readFromURLOfType(path, type, &reason);
    if (!isRead || !document->readError().domain.isEmpty()) {
        fail(error, readError(path, reason.domain.isEmpty() ? document->readError() : reason));
        return nullptr;
    }
    return document;
}

} // namespace

Recovery::Recovery(QObject *parent) : QObject(parent) { }

Recovery::~Recovery() = default;

const QList<RecoverableContent> &Recovery::find()
{
    for (const QString &folder : AutosaveFolder::others()) {
        const bool isHeld = std::any_of(m_held.begin(), m_held.end(),
                                        [&folder](const auto &held) { return held->path() == folder; });
        auto abandoned = isHeld ? nullptr : std::make_unique<AutosaveFolder::Abandoned>(folder);
        if (!abandoned || !abandoned->isTaken())
            continue;
        addAutosavesIn(folder);
        m_held.push_back(std::move(abandoned));
    }
    for (const RescueFiles::Found &rescue : RescueFiles::leftForAny())
        addRescue(rescue.path, rescue.target);
    // A crash in the middle of a save leaves an autosave that names the file.
    for (const RecoverableContent &content : QList<RecoverableContent>(m_contents)) {
        if (!content.originalPath.isEmpty())
            findFor(content.originalPath);
    }
    Q_EMIT contentsChanged();
    return m_contents;
}

const QList<RecoverableContent> &Recovery::findFor(const QString &path)
{
    for (const RescueFiles::Found &rescue : RescueFiles::leftFor(path))
        addRescue(rescue.path, rescue.target);
    return m_contents;
}

void Recovery::addAutosavesIn(const QString &folder)
{
    const QDir files(folder);
    for (const QFileInfo &info : files.entryInfoList(QDir::Files | QDir::Hidden)) {
        const QString path = info.filePath();
        if (info.isSymLink() || !AutosaveFolder::isOwnName(info.fileName())) {
            tellPassedOver(path, "it is no autosave");
            continue;
        }
        const bool isContent = path.endsWith(AutosaveFolder::kContentSuffix);
        if (!isContent) {
            // Half-written ones, and notes whose content never came.
            const QString itsContent =
                path.chopped(AutosaveFolder::kNoteSuffix.size()) + AutosaveFolder::kContentSuffix;
            const QString whoseTyped =
                path.chopped(AutosaveFolder::kTypedSuffix.size()) + AutosaveFolder::kContentSuffix;
            const bool isNote = path.endsWith(AutosaveFolder::kNoteSuffix) && QFileInfo::exists(itsContent);
            const bool isTyped = path.endsWith(AutosaveFolder::kTypedSuffix) && QFileInfo::exists(whoseTyped);
            if (info.fileName() != "lock"_L1 && !isNote && !isTyped)
                QFile::remove(path);
            continue;
        }
        RecoverableContent content;
        content.contentPath = path;
        content.notePath = AutosaveFolder::besideContent(path, AutosaveFolder::kNoteSuffix);
        content.typedPath = AutosaveFolder::besideContent(path, AutosaveFolder::kTypedSuffix);
        const AutosaveNote note = AutosaveNote::fromJson(bytesOf(content.notePath));
        content.originalPath = note.originalPath;
        content.type = note.type.isEmpty() ? kContentType : note.type;
        content.displayName = note.displayName.isEmpty() ? tr("Unnamed document") : note.displayName;
        content.savedAt = note.savedAt.isValid() ? note.savedAt : info.lastModified();
        content.process = note.process;
        content.size = info.size();
        content.original = note.original;
        content.hasOriginalChanged = hasChanged(note.originalPath, note);
        m_contents << content;
    }
}

void Recovery::addRescue(const QString &path, const QString &target)
{
    // The save may have ended all but for taking away its rescue file.
    if (!target.isEmpty() && haveSameContent(path, target)) {
        RescueFiles::remove(path);
        return;
    }
    const QFileInfo info(path);
    RecoverableContent content;
    content.kind = RecoverableContent::Kind::Rescue;
    content.contentPath = path;
    content.originalPath = target;
    content.type = DocumentController::shared().typeForURL(target);
    content.displayName = target.isEmpty() ? info.fileName() : shownPath(QFileInfo(target).fileName());
    content.savedAt = info.lastModified();
    content.size = info.size();
    content.original = FileState::of(target);
    if (content.type.isEmpty())
        content.type = kContentType;
    if (!m_contents.contains(content))
        m_contents << content;
}

Document *Recovery::restore(const RecoverableContent &content, Error *error)
{
    DocumentController &controller = DocumentController::shared();
    const bool isRescue = content.kind == RecoverableContent::Kind::Rescue;
    bool isWhole = true;
    std::unique_ptr<Document> restored =
        documentOf(content.contentPath, content.type, error, isRescue ? nullptr : &isWhole);
    if (!restored)
        return nullptr;
    Document *open =
        content.originalPath.isEmpty() ? nullptr : controller.documentForURL(content.originalPath);
    const bool getsFile = !content.originalPath.isEmpty() && (!open || !open->isDocumentEdited());
    if (open && getsFile)
        open->close();
    if (getsFile) {
        restored->setFileType(content.type);
        restored->setFileURL(content.originalPath);
        restored->noteFileRead(content.hasOriginalChanged ? content.original
                                                          : FileState::of(content.originalPath));
        restored->learnFormOf(content.originalPath);
    } else {
        restored->setUntitledName(content.displayName);
    }
    Document *document = restored.release();
    controller.addDocument(document);
    document->updateChangeCount(Document::ChangeDone);
    document->makeWindowControllers();
    if (!isWhole) {
        fail(error,
             {u"OpenError"_s, 5, tr("“%1” could not be restored as a whole.").arg(content.displayName),
              tr("The autosaved content is damaged: some of its records are missing or not what they were."),
              tr("What could be read is open. The content stays in “%1”.").arg(content.contentPath)});
        return document;
    }
    if (!takeTyped(*document, content) || !document->autosave(error))
        return document; // what was left is still its only copy on the disk
    discard(content);
    return document;
}

/// Puts what stood in editors into the document's records. False when it has to stay where it is.
bool Recovery::takeTyped(Document &document, const RecoverableContent &content)
{
    if (content.typedPath.isEmpty() || fileKind(content.typedPath) == FileKind::None)
        return true;
    constexpr qsizetype kTold = 20;
    const auto &take = DocumentController::shared().pendingTextTaker();
    const std::optional<QByteArray> typed = bytesOfSmallFile(content.typedPath, kLongestTyped, Links::Refuse);
    if (!take || !typed) {
        ErrorPresenter::shared().present(
            {u"Notice"_s,
             3,
             tr("What was being typed in “%1” could not be restored.").arg(content.displayName),
             {},
             tr("It stays in “%1”, and what was restored beside it.").arg(content.typedPath)});
        return false;
    }
    const QStringList refused = take(document, QJsonDocument::fromJson(*typed).array());
    for (const QString &sentence : refused.first(qMin(refused.size(), kTold)))
        ErrorPresenter::shared().present({u"Notice"_s, 2, sentence, {}, {}});
    if (refused.size() <= kTold)
        return true;
    // More than anybody has editors: the file is none of the program's, and stays.
    ErrorPresenter::shared().present(
        {u"Notice"_s,
         2,
         tr("Texts that could not be put where they were: %1.").arg(refused.size()),
         {},
         tr("They stay in “%1”.").arg(content.typedPath)});
    return false;
}

bool Recovery::discard(const RecoverableContent &content, Error *error)
{
    const RecoverableContent discarded = content; // it may be one of the list
    QFile file(discarded.contentPath);
    const bool isRescue = discarded.kind == RecoverableContent::Kind::Rescue;
    const bool isRemoved =
        isRescue ? RescueFiles::remove(discarded.contentPath) : file.remove() || !file.exists();
    if (!isRemoved)
        return fail(error,
                    {u"SaveError"_s,
                     5,
                     tr("“%1” could not be removed.").arg(discarded.contentPath),
                     file.errorString(),
                     {}});
    for (const QString &path : {discarded.notePath, discarded.typedPath}) {
        if (!path.isEmpty())
            QFile::remove(path);
    }
    forget(discarded);
    return true;
}

void Recovery::forget(const RecoverableContent &content)
{
    m_contents.removeAll(content);
    std::erase_if(m_held, [this](const auto &held) {
        return std::none_of(m_contents.cbegin(), m_contents.cend(), [&held](const RecoverableContent &left) {
            return left.contentPath.startsWith(held->path());
        });
    });
    Q_EMIT contentsChanged();
}

static Document *addCopy(std::unique_ptr<Document> copy, const QString &name)
{
    if (!copy)
        return nullptr;
    copy->setUntitledName(name);
    Document *opened = copy.release();
    DocumentController::shared().addDocument(opened);
    return opened;
}

Document *Recovery::openCopy(const QString &path, const QString &type, const QString &name, Error *error)
{
    return addCopy(documentOf(path, type, error), name);
}

std::pair<Document *, Document *> Recovery::openToCompare(const RecoverableContent &content, Error *error)
{
    Document *original =
        openCopy(content.originalPath, content.type, tr("%1 (on disk)").arg(content.displayName), error);
    bool isWhole = true;
    std::unique_ptr<Document> copy = original
        ? documentOf(content.contentPath, content.type, error,
                     content.kind == RecoverableContent::Kind::Rescue ? nullptr : &isWhole)
        : nullptr;
    Document *recovered = addCopy(std::move(copy), tr("%1 (recovered)").arg(content.displayName));
    if (!recovered && original)
        std::exchange(original, nullptr)->close();
    return {original, recovered};
}

} // namespace runebook
