#include "platform/CheckedFile.h"

#include "platform/FilePath.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThread>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(CheckedFile)
};

constexpr std::size_t kBlock = 1 << 20;

/// Calls \a call again as long as a signal interrupts it.
template <typename Call> auto uninterrupted(const Call &call)
{
    decltype(call()) result {};
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

QString stepText(CheckedFile::Step step)
{
    using Step = CheckedFile::Step;
    switch (step) {
    case Step::None:
    case Step::Open:
        return Texts::tr("Opening “%1” failed: %2");
    case Step::Lock:
        return Texts::tr("Locking “%1” failed: %2");
    case Step::Reserve:
        return Texts::tr("Finding room for “%1” failed: %2");
    case Step::Write:
        return Texts::tr("Writing “%1” failed: %2");
    case Step::Truncate:
        return Texts::tr("Setting the length of “%1” failed: %2");
    case Step::Sync:
        return Texts::tr("Waiting until “%1” is on the disk failed: %2");
    case Step::Verify:
        return Texts::tr("Checking what was written to “%1” failed: %2");
    case Step::Close:
        return Texts::tr("Closing “%1” failed: %2");
    case Step::Rename:
        return Texts::tr("Giving “%1” its name failed: %2");
    }
    return {};
}

} // namespace

CheckedFile::CheckedFile(const QString &path, int flags, mode_t mode)
    : m_path(path),
      // A pipe that nobody reads would keep the opening waiting.
      m_descriptor(uninterrupted([&] {
          return ::open(nativePath(path).constData(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
      }))
{
    if (m_descriptor < 0)
        failAt(Step::Open, errno);
}

CheckedFile::~CheckedFile()
{
    close();
}

bool CheckedFile::failAt(Step step, int code)
{
    if (!m_failure) {
        m_failure = code;
        m_failedStep = step;
    }
    return false;
}

bool CheckedFile::isRegular() const
{
    struct stat status = {};
    return isOpen() && ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool CheckedFile::isStillNamed() const
{
    struct stat mine = {};
    struct stat named = {};
    return isOpen() && ::fstat(m_descriptor, &mine) == 0
        && ::stat(nativePath(m_path).constData(), &named) == 0 && mine.st_ino == named.st_ino
        && mine.st_dev == named.st_dev;
}

QString CheckedFile::failureText() const
{
    return stepText(m_failedStep).arg(shownPath(m_path), QString::fromLocal8Bit(std::strerror(m_failure)));
}

qint64 CheckedFile::size() const
{
    struct stat status = {};
    return isOpen() && ::fstat(m_descriptor, &status) == 0 ? status.st_size : 0;
}

bool CheckedFile::lock(Lock kind, std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds kPause {5};
    const QDeadlineTimer deadline(patience);
    const int operation = (kind == Lock::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
    for (;;) {
        // Some network file systems know no locks; without one a save is as safe as ever.
        if (::flock(m_descriptor, operation) == 0 || errno != EWOULDBLOCK)
            return true;
        if (deadline.hasExpired())
            return false;
        QThread::usleep(std::chrono::microseconds(kPause).count());
    }
}

bool CheckedFile::reserve(qint64 size)
{
    if (m_failure)
        return false;
    if (size <= 0
        || uninterrupted([&] { return ::fallocate(m_descriptor, FALLOC_FL_KEEP_SIZE, 0, size); }) == 0)
        return true;
    const bool isFull = errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO;
    return isFull ? failAt(Step::Reserve, errno) : true;
}

bool CheckedFile::write(std::string_view block)
{
    while (!block.empty() && !m_failure) {
        const ssize_t count =
            uninterrupted([&] { return ::write(m_descriptor, block.data(), block.size()); });
        if (count <= 0)
            return failAt(Step::Write, count < 0 ? errno : EIO);
        block.remove_prefix(static_cast<std::size_t>(count));
        m_written += count;
    }
    return !m_failure;
}

bool CheckedFile::settle()
{
    if (m_failure)
        return false;
    if (uninterrupted([&] { return ::ftruncate(m_descriptor, m_written); }) != 0)
        return failAt(Step::Truncate, errno);
    // Never tried again by itself: after a failure the system counts the lost blocks as written.
    if (::fsync(m_descriptor) != 0)
        return failAt(Step::Sync, errno);
    if (size() != m_written)
        return failAt(Step::Verify, EIO);
    // Some file systems tell only when the file is closed that they could not keep it. Closing a second
    // descriptor asks them, and the lock stays.
    const int second = ::fcntl(m_descriptor, F_DUPFD_CLOEXEC, 0);
    if (second < 0 || (::close(second) != 0 && errno != EINTR))
        return failAt(Step::Close, errno);
    return true;
}

void CheckedFile::startAgain()
{
    m_failure = 0;
    m_failedStep = Step::None;
    m_written = 0;
    ::lseek(m_descriptor, 0, SEEK_SET);
}

bool CheckedFile::close()
{
    if (m_descriptor < 0)
        return !m_failure;
    // After EINTR the descriptor is gone all the same; closing again could hit somebody else's.
    if (::close(std::exchange(m_descriptor, -1)) != 0 && errno != EINTR)
        return failAt(Step::Close, errno);
    return !m_failure;
}

bool CheckedFile::renameTo(const QString &path)
{
    if (m_failure)
        return false;
    const QByteArray from = nativePath(m_path);
    const QByteArray to = nativePath(path);
    int result = ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    if (result != 0 && errno == EINVAL) {
        // This file system cannot do it in one step; a second name is refused as well where one is taken.
        result = ::link(from.constData(), to.constData());
        if (result == 0)
            ::unlink(from.constData());
    }
    if (result != 0)
        return failAt(Step::Rename, errno);
    m_path = path;
    return true;
}

std::optional<std::string_view> CheckedFile::readBlock(std::string &buffer)
{
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = uninterrupted([&] {
            return ::pread(m_descriptor, buffer.data() + filled, buffer.size() - filled, m_readPlace);
        });
        if (count < 0) {
            failAt(Step::Verify, errno);
            return {};
        }
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
        m_readPlace += count;
    }
    return std::string_view(buffer.data(), filled);
}

bool CheckedFile::writeContentOf(CheckedFile &source)
{
    source.m_readPlace = 0;
    std::string buffer(kBlock, '\0');
    for (;;) {
        const std::optional<std::string_view> block = source.readBlock(buffer);
        if (!block || !write(*block))
            return false;
        if (block->size() < buffer.size())
            return true;
    }
}

bool CheckedFile::hasContentOf(CheckedFile &source)
{
    m_readPlace = source.m_readPlace = 0;
    if (size() != source.size())
        return false;
    std::string mine(kBlock, '\0');
    std::string theirs(kBlock, '\0');
    for (;;) {
        const std::optional<std::string_view> block = readBlock(mine);
        const std::optional<std::string_view> other = source.readBlock(theirs);
        if (!block || block != other)
            return block && !other ? failAt(Step::Verify, EIO) : false;
        if (block->size() < mine.size())
            return true;
    }
}

int syncFolderOf(const QString &path)
{
    const QByteArray folder = nativePath(QFileInfo(path).absolutePath());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return 0; // one that may be written to but not read
    const int code = ::fsync(descriptor) == 0 ? 0 : errno;
    ::close(descriptor);
    return code == EINVAL || code == ENOTSUP || code == EROFS ? 0 : code;
}

} // namespace runebook
