#include "scripting/ScriptFile.h"

#include "model/StringHelpers.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Decides for nearly all files whether they declare a title.
constexpr qint64 kFirstBytes = 4096;
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

/// Nothing when the bytes are not UTF-8; a character that the end cuts in two is none when \a isCut.
std::optional<QString> decode(QByteArrayView bytes, bool isCut)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           isCut ? QStringDecoder::Flag::Default : QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return {};
    return text;
}

std::optional<ScriptFile> readFile(const QString &path)
{
    QFile file(path);
    // Looked at first: opening a pipe would wait for somebody to write into it.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QByteArray bytes = file.read(kFirstBytes);
    const bool isCut = bytes.size() == kFirstBytes;
    std::optional<QString> text = decode(bytes, isCut);
    if (!text || (!ScriptFile::menuTitle(*text) && !(isCut && needsMore(*text))))
        return {};
    if (isCut) {
        bytes += file.read(ScriptFile::kMaxBytes - kFirstBytes);
        text = decode(bytes, bytes.size() == ScriptFile::kMaxBytes);
    }
    qsizetype end = 0;
    const std::optional<QString> title = text ? ScriptFile::menuTitle(*text, &end) : std::nullopt;
    if (!title)
        return {};
    return ScriptFile {path, *title, ScriptFile::docString(*text, end)};
}

} // namespace

std::optional<ScriptFile> ScriptFile::read(const QString &path)
{
    if (auto script = readFile(path))
        return script;
    const QString resolved = QFileInfo(path).canonicalFilePath();
    return resolved.isEmpty() || resolved == path ? std::nullopt : readFile(resolved);
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
    const qsizetype mark = advance(text, "__doc__"_L1, start);
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
