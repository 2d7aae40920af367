#include "platform/FileBytes.h"

#include "platform/CheckedFile.h"
#include "platform/FilePath.h"
#include "platform/ParallelParts.h"

#include <QSet>
#include <QUtf8StringView>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace runebook {

namespace {

// Less is read before another thread has started.
constexpr qsizetype kSmallestPart = 4 << 20;

/// Calls \a work(begin, end) for parts of [0, size) at the same time.
template <typename Work> void forParts(qsizetype size, const Work &work)
{
    const qsizetype parts = usefulParts(size, kSmallestPart);
    inParallel(parts, [&](qsizetype part) { work(size * part / parts, size * (part + 1) / parts); });
}

/// Lowers \a value to \a limit.
void lower(std::atomic<qsizetype> &value, qsizetype limit)
{
    qsizetype known = value;
    while (limit < known && !value.compare_exchange_weak(known, limit)) { }
}

} // namespace

std::optional<QByteArray> bytesOfFile(const CheckedFile &file, QString *reason)
{
    QByteArray bytes(file.size(), Qt::Uninitialized);
    std::atomic<qsizetype> end = bytes.size();
    std::atomic<int> failure = 0;
    const int descriptor = file.descriptor();
    forParts(bytes.size(), [&, data = bytes.data()](qsizetype place, qsizetype partEnd) {
        while (place < partEnd) {
            const ssize_t count =
                ::pread(descriptor, data + place, static_cast<std::size_t>(partEnd - place), place);
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                failure = errno;
            if (count <= 0) {
                lower(end, place);
                return;
            }
            place += count;
        }
    });
    if (failure) {
        *reason = qt_error_string(failure);
        return {};
    }
    bytes.truncate(end);
    return bytes;
}

std::optional<QByteArray> bytesOfSmallFile(const QString &path, qint64 limit, Links links)
{
    const CheckedFile file(path, O_RDONLY | (links == Links::Refuse ? O_NOFOLLOW : 0));
    if (!file.isOpen() && file.failure() == ENOENT)
        return {};
    if (!file.isRegular() || file.size() > limit) {
        tellPassedOver(path,
                       file.failure() == EACCES ? "it cannot be read"
                           : file.isRegular()   ? "it is too large"
                                                : "it is no plain file");
        return {};
    }
    QString reason;
    return bytesOfFile(file, &reason);
}

void tellPassedOver(const QString &path, const char *why)
{
    static std::mutex mutex;
    static QSet<QString> told;
    const std::lock_guard guard(mutex);
    if (told.contains(path))
        return;
    told << path;
    std::fprintf(stderr, "runebook: “%s” is passed over: %s\n", qPrintable(shownPath(path)), why);
}

bool isUtf8(const QByteArray &bytes)
{
    // Every part begins with a character: the bytes that go on with one belong to the part before.
    const auto characterFrom = [&bytes](qsizetype place) {
        while (place < bytes.size() && (static_cast<unsigned char>(bytes.at(place)) & 0xC0) == 0x80)
            ++place;
        return place;
    };
    std::atomic<bool> isValid = true;
    forParts(bytes.size(), [&](qsizetype begin, qsizetype end) {
        const qsizetype first = begin ? characterFrom(begin) : 0;
        const qsizetype last = characterFrom(end);
        if (first < last && !QUtf8StringView(bytes.constData() + first, last - first).isValidUtf8())
            isValid = false;
    });
    return isValid;
}

} // namespace runebook
