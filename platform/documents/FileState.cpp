#include "platform/documents/FileState.h"

#include "platform/CheckedFile.h"
#include "platform/FilePath.h"

#include <QJsonObject>
#include <QtEndian>
#include <bit>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kBlock = 1 << 20;

qint64 nanoseconds(const timespec &time)
{
    return static_cast<qint64>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

quint64 mixed(quint64 state, quint64 word)
{
    constexpr quint64 kMultiplier = 0x9E3779B97F4A7C15;
    return std::rotl(state ^ word, 29) * kMultiplier;
}

/// Takes whole words; only the last block may end with a part of one.
quint64 hashOfBlock(quint64 state, std::string_view block)
{
    while (block.size() >= sizeof(quint64)) {
        quint64 word = 0;
        std::memcpy(&word, block.data(), sizeof word);
        state = mixed(state, qToLittleEndian(word));
        block.remove_prefix(sizeof word);
    }
    quint64 rest = block.size();
    for (const char byte : block)
        rest = rest << 8 | static_cast<unsigned char>(byte);
    return block.empty() ? state : mixed(state, rest);
}

FileState stateFrom(const struct stat &status)
{
    return {true,
            status.st_dev,
            status.st_ino,
            status.st_size,
            nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

} // namespace

FileState FileState::of(const QString &path)
{
    struct stat status = {};
    const bool isThere = !path.isEmpty() && ::stat(nativePath(path).constData(), &status) == 0;
    return isThere ? stateFrom(status) : FileState();
}

FileState FileState::of(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 ? stateFrom(status) : FileState();
}

// Numbers of 64 bits do not fit those of JSON.
QJsonObject FileState::toJson() const
{
    if (!exists)
        return {};
    return {{u"device"_s, QString::number(device)},
            {u"inode"_s, QString::number(inode)},
            {u"size"_s, QString::number(size)},
            {u"modifiedNs"_s, QString::number(modifiedNs)},
            {u"changedNs"_s, QString::number(changedNs)}};
}

FileState FileState::fromJson(const QJsonObject &object)
{
    if (!object.contains("size"_L1))
        return {};
    const auto number = [&object](QLatin1StringView key) {
        return object.value(key).toString().toLongLong();
    };
    return {true,
            object.value("device"_L1).toString().toULongLong(),
            object.value("inode"_L1).toString().toULongLong(),
            number("size"_L1),
            number("modifiedNs"_L1),
            number("changedNs"_L1)};
}

std::optional<quint64> contentHash(const QString &path)
{
    CheckedFile file(path, O_RDONLY);
    if (!file.isRegular())
        return {};
    std::string buffer(kBlock, '\0');
    quint64 state = 0;
    quint64 total = 0;
    for (;;) {
        const std::optional<std::string_view> block = file.readBlock(buffer);
        if (!block)
            return {};
        state = hashOfBlock(state, *block);
        total += block->size();
        if (block->size() < buffer.size())
            return mixed(state, total);
    }
}

bool haveSameContent(const QString &path, const QString &other)
{
    CheckedFile one(path, O_RDONLY);
    CheckedFile two(other, O_RDONLY);
    return one.isRegular() && two.isRegular() && one.hasContentOf(two);
}

} // namespace runebook
