#include "platform/documents/FileSaver.h"

#include "platform/CheckedFile.h"
#include "platform/FilePath.h"
#include "platform/documents/RescueFiles.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(FileSaver)
};

QString reasonOf(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

Error saveError(const QString &path, int code, const QString &reason, const QString &suggestion)
{
    return {u"SaveError"_s, code, Texts::tr("“%1” could not be saved.").arg(shownPath(path)), reason,
            suggestion};
}

Error saveError(const QString &path, const CheckedFile &file, const QString &suggestion)
{
    return saveError(path, file.failure(), file.failureText(), suggestion);
}

QString untouched(const QString &path)
{
    return Texts::tr("The file “%1” was not touched. Your changes are still in the window.").arg(path);
}

QString notThere(const QString &path)
{
    return Texts::tr("There is no file “%1” yet. Your changes are still in the window.").arg(path);
}

QString rescued(const QString &path, const QString &rescue)
{
    return Texts::tr(
               "The file “%1” may be damaged now; do not use it. The new text lies whole in the rescue file "
               "“%2”, and your changes are still in the window.")
        .arg(path, rescue);
}

/// Removes a file at the end of a scope unless it is to stay.
class Removal
{
public:
    explicit Removal(QString path) : m_path(std::move(path)) { }
    ~Removal()
    {
        if (!m_path.isEmpty())
            removeFile(m_path);
    }
    Removal(const Removal &) = delete;
    Removal &operator=(const Removal &) = delete;
    void setPath(const QString &path) { m_path = path; }
    void keepFile() { m_path.clear(); }

private:
    QString m_path;
};

/// Writes the content into \a file; false leaves the reason in \a error when it is the producer's, and in the
/// file otherwise.
bool produceInto(CheckedFile &file, const ContentProducer &produce, Error *error)
{
    // A producer that stops because the file refused has no reason of its own.
    return produce([&file](std::string_view block) { return file.write(block); }, error) && !file.failure();
}

/// The same with what \a path has to do with it: domain, step and what is safe.
bool produceAndSettle(CheckedFile &file, const QString &path, const ContentProducer &produce,
                      const QString &suggestion, Error *error)
{
    Error reason;
    const bool isProduced = produceInto(file, produce, &reason);
    if (isProduced && file.settle())
        return true;
    if (file.failure())
        return fail(error, saveError(path, file, suggestion));
    if (reason.recoverySuggestion.isEmpty())
        reason.recoverySuggestion = suggestion;
    return fail(error, reason);
}

bool createNew(const QString &path, const ContentProducer &produce, Error *error, SavedState *saved)
{
    if (QFileInfo(path).isSymLink())
        return fail(error,
                    saveError(path, ENOENT, Texts::tr("It is a link that leads to no file."),
                              Texts::tr("Save it under another name.")));
    const RescueFiles::Place place = RescueFiles::createInFolderOf(path);
    if (!place.file)
        return fail(
            error,
            saveError(path, place.failure,
                      Texts::tr("Making a file in its folder failed: %1").arg(reasonOf(place.failure)),
                      Texts::tr("Choose another folder or make this one writable.")));
    CheckedFile &file = *place.file;
    Removal removal(file.path());
    if (!produceAndSettle(file, path, produce, notThere(path), error))
        return false;
    if (!file.renameTo(path))
        return fail(error, saveError(path, file, notThere(path)));
    removal.keepFile();
    saved->after = FileState::of(file.descriptor());
    if (const int code = syncFolderOf(path))
        return fail(
            error,
            saveError(path, code,
                      Texts::tr("Waiting until its name is on the disk failed: %1").arg(reasonOf(code)),
                      Texts::tr("The file is there and whole, but may not outlast a power failure.")));
    return true;
}

/// What stayed of failed saves of this process: a later save of the same file that goes well has all of it.
QHash<QString, QStringList> &ownRescues()
{
    static QHash<QString, QStringList> rescues;
    return rescues;
}

/// Writes the content of \a rescue over \a target. An interrupted sync may have lost what was written before,
/// so then the whole is written again; after any other failure nothing is.
bool copyOver(CheckedFile &target, CheckedFile &rescue)
{
    constexpr int kAttempts = 3;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (target.writeContentOf(rescue) && target.settle())
            return true;
        if (target.failure() != EINTR || target.failedStep() != CheckedFile::Step::Sync)
            return false;
        target.startAgain();
    }
    return false;
}

/// Opens the file to be written over, for reading as well where that is allowed.
std::unique_ptr<CheckedFile> openTarget(const QString &path, bool *isReadable)
{
    auto target = std::make_unique<CheckedFile>(path, O_RDWR);
    *isReadable = target->isOpen();
    if (target->failure() == EACCES)
        target = std::make_unique<CheckedFile>(path, O_WRONLY);
    return target;
}

/// Fills the rescue file of \a path and gives it the name that says that it is whole.
bool completeRescue(CheckedFile &rescue, const QString &name, const QString &path,
                    const ContentProducer &produce, Error *error)
{
    if (!produceAndSettle(rescue, path, produce, untouched(path), error))
        return false;
    if (!rescue.renameTo(name))
        return fail(error, saveError(path, rescue, untouched(path)));
    if (const int code = syncFolderOf(name))
        return fail(
            error,
            saveError(
                path, code,
                Texts::tr("Waiting until the rescue file is on the disk failed: %1").arg(reasonOf(code)),
                untouched(path)));
    return true;
}

/// Writes what the whole \a rescue holds into \a target and looks whether it is there.
bool writeOver(CheckedFile &target, bool isReadable, CheckedFile &rescue, Error *error, SavedState *saved)
{
    const QString path = target.path();
    const bool isWritten = copyOver(target, rescue) && (!isReadable || target.hasContentOf(rescue));
    // Another program may have put its own file there meanwhile; then the text went into one without name.
    saved->after = FileState::of(target.descriptor());
    if (isWritten && target.isStillNamed() && target.close())
        return true;
    const QString suggestion = rescued(path, rescue.path());
    const CheckedFile &failed = rescue.failure() ? rescue : target;
    return fail(
        error,
        failed.failure()
            ? saveError(path, failed, suggestion)
            : saveError(path, EIO, Texts::tr("Another program has written to it meanwhile."), suggestion));
}

bool overwrite(const QString &path, const ContentProducer &produce, Error *error, SavedState *saved)
{
    bool isReadable = false;
    const std::unique_ptr<CheckedFile> target = openTarget(path, &isReadable);
    if (!target->isOpen())
        return fail(error,
                    saveError(path, *target,
                              untouched(path) + u'\n'
                                  + Texts::tr("Save it under another name or change its permissions.")));
    if (!target->isRegular())
        return fail(error,
                    saveError(path, EINVAL, Texts::tr("It is no file any more."),
                              Texts::tr("Save it under another name.")));
    const FileState before = FileState::of(path);
    const RescueFiles::Place place = RescueFiles::create(path);
    if (!place.file)
        return fail(error,
                    saveError(path, place.failure,
                              Texts::tr("No rescue file could be made: %1").arg(reasonOf(place.failure)),
                              untouched(path)));
    CheckedFile &rescue = *place.file;
    Removal noteRemoval(RescueFiles::note(path, place.name));
    Removal removal(rescue.path());
    const bool isComplete = completeRescue(rescue, place.name, path, produce, error);
    removal.setPath(rescue.path());
    if (!isComplete)
        return false;
    if (!target->lock(CheckedFile::Lock::Whole, CheckedFile::kPatience))
        return fail(error,
                    saveError(path, EBUSY, Texts::tr("Another program is writing to it."), untouched(path)));
    // What was made from an older state must not replace a newer one, and the file must be the one that is
    // locked.
    const FileState now = FileState::of(path);
    if (now != before || now != saved->before.value_or(now) || !target->isStillNamed())
        return fail(
            error,
            saveError(path, EBUSY, Texts::tr("Another program has changed it meanwhile."), untouched(path)));
    if (!target->reserve(rescue.size()))
        return fail(error, saveError(path, *target, untouched(path)));
    if (!writeOver(*target, isReadable, rescue, error, saved)) {
        removal.keepFile();
        noteRemoval.keepFile();
        ownRescues()[path] << rescue.path();
        return false;
    }
    for (const QString &old : ownRescues().take(path))
        RescueFiles::remove(old);
    return true;
}

/// Writes and settles the new file of a replacement and gives it its name.
bool replaceBy(CheckedFile &file, const QString &path, FileSaver::Wait wait, Error *error)
{
    const QByteArray from = nativePath(file.path());
    const bool isSettled = wait == FileSaver::Wait::No || file.settle();
    if (!isSettled || !file.close())
        return fail(error, saveError(path, file, {}));
    if (::rename(from.constData(), nativePath(path).constData()) != 0)
        return fail(
            error,
            saveError(path, errno, Texts::tr("Giving it its name failed: %1").arg(reasonOf(errno)), {}));
    if (wait == FileSaver::Wait::UntilOnDisk)
        syncFolderOf(path);
    return true;
}

} // namespace

bool FileSaver::save(const QString &path, const ContentProducer &produce, Error *error, SavedState *saved)
{
    SavedState any;
    // A link stays a link: what it leads to is written.
    const QString canonical = canonicalPath(path);
    if (canonical.isEmpty())
        return createNew(QFileInfo(path).absoluteFilePath(), produce, error, saved ? saved : &any);
    const FileKind kind = fileKind(canonical);
    if (kind != FileKind::Regular)
        return fail(error,
                    saveError(path, EINVAL,
                              kind == FileKind::Folder ? Texts::tr("It is a folder.")
                                                       : Texts::tr("It is a device or a pipe."),
                              Texts::tr("Save it under another name.")));
    return overwrite(canonical, produce, error, saved ? saved : &any);
}

bool FileSaver::replace(const QString &path, const ContentProducer &produce, Error *error, Wait wait)
{
    // One that is there was left by a program that is no more, or laid there: neither is written into.
    const QString fresh = path + ".new"_L1;
    removeFile(fresh);
    CheckedFile file(fresh, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file.isOpen())
        return fail(error, saveError(path, file, {}));
    Removal removal(file.path());
    Error reason;
    if (!produceInto(file, produce, &reason))
        return fail(error, file.failure() ? saveError(path, file, {}) : reason);
    if (!replaceBy(file, path, wait, error))
        return false;
    removal.keepFile();
    return true;
}

} // namespace runebook
