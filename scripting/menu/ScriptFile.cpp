#include "scripting/menu/ScriptFile.h"

#include "model/StringHelpers.h"
#include "platform/FileBytes.h"
#include "platform/FilePath.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QVarLengthArray>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Nearly all scripts are shorter.
constexpr qsizetype kFirstBytes = 16 * 1024;
constexpr qsizetype kFirstLines = 512;
constexpr char kDocMark[] = "__doc__";
constexpr int kTitleLines = 3;

struct Marker {
    QLatin1StringView text;
    qsizetype shortestLine;
};
constexpr Marker kMarkers[] = {
    {"#MenuTitle:"_L1, 14},
    {"# MenuTitle:"_L1, 15},
    {"#FLM:"_L1, 8},
};

qsizetype skipBlanks(QStringView text, qsizetype place)
{
    while (place < text.size() && isWhitespaceOrNewline(text[place].unicode()))
        ++place;
    return place;
}

qsizetype lineEnd(QStringView text, qsizetype place)
{
    while (place < text.size() && !isLineEnd(text[place].unicode()))
        ++place;
    return place;
}

QStringView trimmed(QStringView text)
{
    const qsizetype start = skipBlanks(text, 0);
    qsizetype end = text.size();
    while (end > start && isWhitespaceOrNewline(text[end - 1].unicode()))
        --end;
    return text.sliced(start, end - start);
}

/// The place of \a wanted from \a start on, or the end of the text.
qsizetype advance(QStringView text, QLatin1StringView wanted, qsizetype start)
{
    const qsizetype found = start < text.size() ? text.indexOf(wanted, start) : -1;
    return found < 0 ? text.size() : found;
}

/// Whether the first bytes of a file that goes on behind them end inside one of the lines that decide.
bool needsMore(QStringView text)
{
    qsizetype place = 0;
    for (int line = 0; line < kTitleLines; ++line) {
        place = lineEnd(text, skipBlanks(text, place));
        if (place == text.size())
            return true;
    }
    return false;
}

/// A file that is open to be read, for one scope. Thousands are read in a row: QFile takes longer for each
/// than the disk.
class OpenFile
{
public:
    explicit OpenFile(const QString &path)
        // Not waiting: a pipe would until somebody writes into it.
        : m_descriptor(::open(nativePath(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
    {
        struct stat status = {};
        if (m_descriptor < 0 || (::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode)))
            return;
        ::close(std::exchange(m_descriptor, -1));
        if (!S_ISDIR(status.st_mode))
            tellPassedOver(path, "it is no plain file");
    }
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Q_DISABLE_COPY_MOVE(OpenFile)

    /// Reads up to \a size bytes to \a to; fewer only at the end of the file. -1 when it cannot be read.
    qsizetype read(char *to, qsizetype size) const
    {
        ssize_t got = 0;
        do
            got = ::read(m_descriptor, to, static_cast<std::size_t>(size));
        while (got < 0 && errno == EINTR);
        return got;
    }

private:
    int m_descriptor;
};

/// The bytes without a character at their end that is not there as a whole.
QByteArrayView wholeCharacters(QByteArrayView bytes)
{
    constexpr qsizetype kLongestCharacter = 4;
    for (qsizetype back = 1; back <= std::min(bytes.size(), kLongestCharacter); ++back) {
        const auto byte = static_cast<uchar>(bytes[bytes.size() - back]);
        if ((byte & 0xC0) == 0x80)
            continue;
        const qsizetype length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        return length > back ? bytes.chopped(back) : bytes;
    }
    return bytes;
}

/// Text on the stack: each large piece of the heap has all small ones swept together, which for thousands of
/// scripts takes longer than reading them.
template <qsizetype Room> class DecodedText
{
public:
    explicit DecodedText(QByteArrayView utf8)
    {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        m_units.resize(decoder.requiredSpace(utf8.size()));
        m_end = decoder.appendToBuffer(m_units.data(), utf8);
    }
    QStringView view() const { return {m_units.data(), m_end}; }

private:
    QVarLengthArray<QChar, Room> m_units;
    const QChar *m_end;
};

/// Why a file is no script; nothing when it is one.
using Reading = std::optional<ScriptFile::Omission>;

/// Fills in title and tooltip from the text of a script.
Reading describe(ScriptFile &script, QStringView text, bool mayHaveDocString)
{
    qsizetype end = 0;
    const std::optional<QString> title = ScriptFile::menuTitle(text, &end);
    if (!title)
        return ScriptFile::Omission::NoTitle;
    script.title = *title;
    if (mayHaveDocString)
        script.toolTip = ScriptFile::docString(text, end);
    return std::nullopt;
}

/// Reads the file at the path of \a script and fills in the rest.
Reading read(ScriptFile &script)
{
    const OpenFile file(script.path);
    // On the stack: the allocator would take as long for each as the disk.
    std::array<char, kFirstBytes> beginning;
    const qsizetype length = file.read(beginning.data(), kFirstBytes);
    if (length < 0)
        return ScriptFile::Omission::NotReadable;
    QByteArrayView bytes(beginning.data(), length);
    // Most scripts need no more of their text than the first lines.
    const QByteArrayView first = bytes.first(std::min(length, kFirstLines));
    const qsizetype lineEnd = first.lastIndexOf('\n') + 1;
    const DecodedText<kFirstLines + 8> lines(first.first(lineEnd));
    const bool isDecided = lineEnd > 0 && !needsMore(lines.view());
    if (isDecided && !ScriptFile::menuTitle(lines.view()))
        return ScriptFile::Omission::NoTitle;
    QByteArray all;
    if (length == kFirstBytes) {
        all = bytes.toByteArray();
        all.resize(ScriptFile::kMaxBytes);
        const qsizetype more = file.read(all.data() + length, all.size() - length);
        if (more < 0)
            return ScriptFile::Omission::NotReadable;
        all.truncate(length + more);
        bytes = all;
    }
    const bool isCut = bytes.size() == ScriptFile::kMaxBytes;
    const QByteArrayView whole = isCut ? wholeCharacters(bytes) : bytes;
    if (!whole.isValidUtf8())
        return ScriptFile::Omission::NotUtf8;
    if (isDecided && !whole.contains(kDocMark))
        return describe(script, lines.view(), false);
    const Reading reading = describe(script, DecodedText<kFirstBytes + 8>(whole).view(), true);
    return reading && isCut ? ScriptFile::Omission::NoTitleInTime : reading;
}

} // namespace

std::optional<ScriptFile> ScriptFile::read(const QString &path, Omission *omission)
{
    ScriptFile script {path, {}, {}};
    Reading reading = runebook::read(script);
    if (reading == Omission::NotReadable || reading == Omission::NotUtf8) {
        script.path = QFileInfo(path).canonicalFilePath();
        if (!script.path.isEmpty() && script.path != path)
            reading = runebook::read(script);
    }
    if (!reading)
        return script;
    if (omission)
        *omission = *reading;
    return std::nullopt;
}

QString ScriptFile::reasonOf(Omission omission)
{
    switch (omission) {
    case Omission::NotReadable:
        return tr("it cannot be read");
    case Omission::NotUtf8:
        return tr("it is not UTF-8");
    case Omission::NoTitle:
        return tr("it has no line “# MenuTitle: …” among its first three");
    case Omission::NoTitleInTime:
        break;
    }
    return tr("it is too large, and has no title in the part that is read");
}

std::optional<QString> ScriptFile::menuTitle(QStringView text, qsizetype *end)
{
    qsizetype place = 0;
    for (int number = 0; number < kTitleLines; ++number) {
        const qsizetype start = skipBlanks(text, place);
        place = lineEnd(text, start);
        const QStringView line = text.sliced(start, place - start);
        if (line.isEmpty() || line.size() == text.size())
            return {};
        for (const Marker &marker : kMarkers) {
            if (!line.startsWith(marker.text) || line.size() < marker.shortestLine)
                continue;
            if (end)
                *end = place;
            return trimmed(line.sliced(marker.text.size())).toString();
        }
    }
    return {};
}

QString ScriptFile::docString(QStringView text, qsizetype start)
{
    constexpr qsizetype kShortestRest = 20;
    constexpr qsizetype kOpening = 4;
    auto delimiter = "\"\"\""_L1;
    const qsizetype mark = advance(text, QLatin1StringView(kDocMark), start);
    if (mark >= text.size() - kShortestRest)
        return {};
    qsizetype place = advance(text, delimiter, mark);
    if (place >= text.size() - 2) {
        delimiter = "'''"_L1;
        place = advance(text, delimiter, mark);
    }
    if (text.size() <= place + kOpening)
        return {};
    place += kOpening;
    const QStringView found = trimmed(text.sliced(place, advance(text, delimiter, place) - place));
    return found.isEmpty() ? QString() : found.toString();
}

} // namespace runebook
