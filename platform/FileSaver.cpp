#include "platform/FileSaver.h"

#include "platform/StandardFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kBlock = 1 << 20;

QString tr(const char *text)
{
    return QCoreApplication::translate("FileSaver", text);
}

QString reasonOf(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

/// An open file that writes all it is given and remembers the first failure.
class OpenFile
{
public:
    OpenFile(const QString &path, int flags, mode_t mode = 0666)
        : m_path(path), m_descriptor(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, mode))
    {
        if (m_descriptor < 0)
            m_failure = errno;
    }
    ~OpenFile() { close(); }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    int failure() const { return m_failure; }
    const QString &path() const { return m_path; }
    qint64 written() const { return m_written; }

    bool write(std::string_view block)
    {
        while (!block.empty() && !m_failure) {
            const ssize_t count = ::write(m_descriptor, block.data(), block.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0) {
                m_failure = count < 0 ? errno : EIO;
                return false;
            }
            block.remove_prefix(static_cast<std::size_t>(count));
            m_written += count;
        }
        return !m_failure;
    }

    /// Cuts the file behind what was written, waits for the disk and looks whether all of it is there.
    bool finish()
    {
        if (m_failure)
            return false;
        if (::ftruncate(m_descriptor, m_written) != 0 || ::fsync(m_descriptor) != 0) {
            m_failure = errno;
            return false;
        }
        struct stat status = {};
        if (::fstat(m_descriptor, &status) != 0)
            m_failure = errno;
        else if (status.st_size != m_written)
            m_failure = EIO;
        return !m_failure;
    }

    bool close()
    {
        if (m_descriptor < 0)
            return !m_failure;
        // After EINTR the descriptor is gone all the same; closing again could hit somebody else's.
        if (::close(std::exchange(m_descriptor, -1)) != 0 && errno != EINTR && !m_failure)
            m_failure = errno;
        return !m_failure;
    }

    ssize_t read(char *buffer, std::size_t size)
    {
        ssize_t count = 0;
        do {
            count = ::read(m_descriptor, buffer, size);
        } while (count < 0 && errno == EINTR);
        if (count < 0)
            m_failure = errno;
        return count;
    }

private:
    QString m_path;
    int m_descriptor;
    int m_failure = 0;
    qint64 m_written = 0;
};

Error saveError(const QString &description, int code, const QString &suggestion)
{
    return {u"SaveError"_s, code, description, reasonOf(code), suggestion};
}

QString untouched(const QString &path)
{
    return tr("The file “%1” was not touched.").arg(path);
}

bool produceInto(OpenFile &file, const ContentProducer &produce, Error *error)
{
    Error reason;
    if (!produce([&file](std::string_view block) { return file.write(block); }, &reason)) {
        // A producer that stops because the sink refused has no reason of its own.
        if (!file.failure())
            return fail(error, reason);
    }
    if (!file.failure() && file.finish() && file.close())
        return true;
    return fail(error, saveError(tr("Writing “%1” failed.").arg(file.path()), file.failure(), {}));
}

/// Removes a file at the end of a scope unless it is to stay.
class Removal
{
public:
    explicit Removal(QString path) : m_path(std::move(path)) { }
    ~Removal()
    {
        if (!m_path.isEmpty())
            ::unlink(QFile::encodeName(m_path).constData());
    }
    Removal(const Removal &) = delete;
    Removal &operator=(const Removal &) = delete;
    void keepFile() { m_path.clear(); }

private:
    QString m_path;
};

bool createNew(const QString &path, const ContentProducer &produce, Error *error)
{
    OpenFile file(path, O_WRONLY | O_CREAT | O_EXCL);
    if (!file.isOpen())
        return fail(error,
                    saveError(tr("The file “%1” could not be created.").arg(path), file.failure(),
                              tr("Choose another folder or make this one writable.")));
    Removal removal(path);
    if (!produceInto(file, produce, error))
        return false;
    removal.keepFile();
    return true;
}

/// The places for a rescue file, the best first.
QStringList rescuePlaces(const QFileInfo &target)
{
    const QString name = u'.' + target.fileName() + ".runebook-rescue"_L1;
    QStringList places {target.dir().filePath(name)};
    const QString own = StandardFolders::userData();
    if (!own.isEmpty() && QDir(own).mkpath(u"Rescue"_s))
        places << own + "/Rescue/"_L1 + target.fileName() + ".runebook-rescue"_L1;
    return places;
}

std::unique_ptr<OpenFile> openRescue(const QFileInfo &target)
{
    constexpr int kAttempts = 100; // names that earlier failures left behind are never overwritten
    std::unique_ptr<OpenFile> rescue;
    for (const QString &place : rescuePlaces(target)) {
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            const QString name = attempt ? place + u'-' + QString::number(attempt) : place;
            rescue = std::make_unique<OpenFile>(name, O_WRONLY | O_CREAT | O_EXCL, 0600);
            if (rescue->isOpen())
                return rescue;
            if (rescue->failure() != EEXIST)
                break;
        }
    }
    return rescue;
}

bool copyInto(OpenFile &target, const QString &rescuePath)
{
    OpenFile rescue(rescuePath, O_RDONLY);
    if (!rescue.isOpen())
        return false;
    std::string buffer(kBlock, '\0');
    for (;;) {
        const ssize_t count = rescue.read(buffer.data(), buffer.size());
        if (count < 0)
            return false;
        if (count == 0)
            break;
        if (!target.write({buffer.data(), static_cast<std::size_t>(count)}))
            return false;
    }
    return target.finish() && target.close();
}

bool overwrite(const QFileInfo &info, const ContentProducer &produce, Error *error)
{
    const QString path = info.filePath();
    OpenFile target(path, O_WRONLY);
    if (!target.isOpen())
        return fail(error,
                    saveError(tr("The file “%1” cannot be written.").arg(path), target.failure(),
                              tr("Save it under another name or change its permissions.")));
    const std::unique_ptr<OpenFile> rescue = openRescue(info);
    if (!rescue || !rescue->isOpen())
        return fail(error,
                    saveError(tr("No rescue file could be made for “%1”.").arg(path),
                              rescue ? rescue->failure() : EIO, untouched(path)));
    Removal removal(rescue->path());
    Error reason;
    if (!produceInto(*rescue, produce, &reason)) {
        reason.recoverySuggestion = untouched(path);
        return fail(error, reason);
    }
    if (!copyInto(target, rescue->path())) {
        removal.keepFile();
        return fail(error,
                    saveError(tr("Writing “%1” failed.").arg(path), target.failure() ? target.failure() : EIO,
                              tr("The new text lies whole in the rescue file “%1”.").arg(rescue->path())));
    }
    return true;
}

} // namespace

bool FileSaver::save(const QString &path, const ContentProducer &produce, Error *error)
{
    // A link stays a link: what it leads to is written.
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const QFileInfo target(canonical.isEmpty() ? path : canonical);
    if (!target.exists())
        return createNew(target.filePath(), produce, error);
    struct stat status = {};
    if (::stat(QFile::encodeName(target.filePath()).constData(), &status) == 0 && !S_ISREG(status.st_mode))
        return fail(error,
                    {u"SaveError"_s, EINVAL, tr("“%1” is no file that can be saved to.").arg(path),
                     S_ISDIR(status.st_mode) ? tr("It is a folder.") : tr("It is a device or a pipe."),
                     tr("Save it under another name.")});
    return overwrite(target, produce, error);
}

bool FileSaver::replace(const QString &path, const ContentProducer &produce, Error *error)
{
    const QString fresh = path + ".new"_L1;
    OpenFile file(fresh, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (!file.isOpen())
        return fail(error,
                    saveError(tr("The file “%1” could not be created.").arg(fresh), file.failure(), {}));
    Removal removal(fresh);
    Error reason;
    const bool produced = produce([&file](std::string_view block) { return file.write(block); }, &reason);
    if (!produced && !file.failure())
        return fail(error, reason);
    if (!produced || !file.close())
        return fail(error, saveError(tr("Writing “%1” failed.").arg(fresh), file.failure(), {}));
    if (::rename(QFile::encodeName(fresh).constData(), QFile::encodeName(path).constData()) != 0)
        return fail(error, saveError(tr("The file “%1” could not be replaced.").arg(path), errno, {}));
    removal.keepFile();
    return true;
}

} // namespace runebook
