#include "document/GlyphDataReader.h"

#include "document/ConflictMarkers.h"
#include "document/GlyphDataWriter.h"
#include "document/GlyphLines.h"
#include "model/RoundTrip.h"
#include "platform/CheckedFile.h"
#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/ParallelParts.h"
#include "platform/TurningWindows.h"
#include "platform/documents/FileState.h"

#include <QCoreApplication>
#include <QSet>
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(GlyphDataReader)
};

Error readError(const QString &path, const QString &reason, const QString &suggestion = {})
{
    return {u"ReadError"_s, 1, Texts::tr("“%1” could not be read.").arg(shownPath(path)), reason, suggestion};
}

Error notEnoughMemory(const QString &path)
{
    Error error = readError(path, Texts::tr("There is not enough memory for it."));
    error.code = ENOMEM;
    return error;
}

/// Whether a file without records holds something that saving an empty list would replace.
bool isForeignWithoutRecords(std::string_view text)
{
    const auto isEmptyList = [text](quint8 version) {
        return text == GlyphDataWriter::header(version).append(GlyphDataWriter::footer());
    };
    return text.find_first_not_of(" \t\r\n") != text.npos && !isEmptyList(1) && !isEmptyList(2);
}

/// Records tell of attributes that they do not know, each once in a run. A file that is full of them is told
/// of once.
void reportUnknown(ReadNotes &notes)
{
    const auto unknown = std::exchange(notes.unknownAttributes, {});
    if (unknown.size() > ReadNotes::kMostKeys) {
        const auto &[key, value] = unknown.front();
        ErrorPresenter::shared().present(
            {u"User"_s,
             1,
             {},
             Texts::tr("There are %1 unknown entries in the file, the first: %2 = %3")
                 .arg(QString::number(notes.count(ReadNotes::UnknownAttribute)), key, value.left(100)),
             {}});
        return;
    }
    VXGlyphInfo info;
    for (const auto &[key, value] : unknown)
        info.setValueForUndefinedKey(value, key);
}

/// Adds a note for each conflict that begins at one of the places \a markers, and one for each other line
/// there that belongs to none.
void noteConflicts(std::string_view text, const std::vector<qsizetype> &markers, const InfoList &infos,
                   ReadNotes &notes)
{
    const std::vector<Conflict> conflicts = conflictsIn(text);
    const auto isWithin = [&](const char *place) {
        const auto next = std::upper_bound(
            conflicts.begin(), conflicts.end(), place,
            [](const char *at, const Conflict &conflict) { return at < conflict.whole.data(); });
        return next != conflicts.begin()
            && place < std::prev(next)->whole.data() + std::prev(next)->whole.size();
    };
    for (const qsizetype marker : markers) {
        const std::string_view line =
            text.substr(std::size_t(marker), text.find('\n', std::size_t(marker)) - std::size_t(marker));
        const bool isBeginning = conflictMarker(line) == ConflictMarker::Ours;
        if (!isBeginning && isWithin(line.data()))
            continue;
        const auto next = std::partition_point(infos.begin(), infos.end(), [marker](const InfoPtr &info) {
            return info->lineOffset() < marker;
        });
        notes.add(isBeginning ? ReadNotes::Conflict : ReadNotes::ForeignLine, next - infos.begin(),
                  FieldValue::textOfUtf8(line).trimmed(), marker);
    }
}

/// Where lines of \a text begin that mark conflicts.
std::vector<qsizetype> markersIn(std::string_view text)
{
    std::vector<qsizetype> markers;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t feed = std::min(text.find('\n', begin), text.size());
        if (conflictMarker(text.substr(begin, feed - begin)) != ConflictMarker::None)
            markers.push_back(qsizetype(begin));
        begin = feed + 1;
    }
    return markers;
}

/// Adds a note for each record whose line is not in the program's form and would not come back as it is now
/// from what a save prints for it.
void noteUnkept(const InfoList &infos, int fileVersion, ReadNotes &notes)
{
    constexpr qint64 kLongest = 1 << 20; // printing longer ones would take several times the file
    std::vector<VXGlyphInfo *> printedAnew;
    for (const InfoPtr &info : infos) {
        const bool isUsual = info->lineLength() > 0 && info->lineLength() < kLongest;
        if (isUsual && info->unchangedLine(fileVersion).empty())
            printedAnew.push_back(info.get());
    }
    if (printedAnew.empty())
        return;
    constexpr qsizetype kSmallest = 2000;
    const std::size_t parts = std::size_t(usefulParts(std::ssize(printedAnew), kSmallest));
    std::vector<std::vector<RoundTrip::Outcome>> outcomes(parts);
    const std::size_t size = printedAnew.size() / parts + 1;
    inParallel(qsizetype(parts), [&](qsizetype part) {
        const std::size_t first = std::min(printedAnew.size(), std::size_t(part) * size);
        const std::size_t count = std::min(size, printedAnew.size() - first);
        RoundTrip(fileVersion)
            .check(std::span(printedAnew).subspan(first, count), outcomes[std::size_t(part)]);
    });
    QSet<qsizetype> noted;
    for (const ReadNotes::Note &note : notes.notes)
        noted.insert(note.record);
    std::size_t next = 0;
    for (qsizetype record = 0; next < printedAnew.size(); ++record) {
        const VXGlyphInfo *info = infos[std::size_t(record)].get();
        if (info != printedAnew[next])
            continue;
        const auto outcome = outcomes[next / size][next % size];
        ++next;
        if (outcome == RoundTrip::Outcome::Same || noted.contains(record))
            continue;
        notes.add(ReadNotes::OtherMeaning, record, info->name(), info->lineOffset());
        --notes.otherForms[fileVersion == 1 ? 0 : 1]; // more than that is told of it now
    }
}

} // namespace

quint8 versionOfHeader(std::string_view header)
{
    constexpr std::string_view kFormat = "format=\"";
    if (const std::size_t format = header.find(kFormat); format != header.npos) {
        const std::size_t digit = format + kFormat.size();
        const bool isDigit = digit < header.size() && header[digit] >= '0' && header[digit] <= '9';
        return isDigit ? static_cast<quint8>(header[digit] - '0') : 0;
    }
    const bool hasMarks = header.find("marks") != header.npos;
    const bool hasAccents = header.find("accents") != header.npos;
    if (hasMarks == hasAccents)
        return 0;
    return hasMarks ? 2 : 1;
}

namespace {

enum class Text : quint8 { Any, Utf8 };

std::optional<QByteArray> readFile(const QString &path, Text text, Error *error)
{
    CheckedFile file(path, O_RDONLY);
    if (!file.isOpen()) {
        fail(error, readError(path, qt_error_string(file.failure())));
        return {};
    }
    if (!file.isRegular()) {
        const bool isFolder = fileKind(path) == FileKind::Folder;
        fail(error,
             readError(path,
                       isFolder ? Texts::tr("It is a folder.") : Texts::tr("It is a device or a pipe.")));
        return {};
    }
    // Not in the middle of a save. Who keeps the file longer than any save locks it for reasons of their own.
    static_cast<void>(file.lock(CheckedFile::Lock::Shared, CheckedFile::kPatience));
    try {
        QString reason;
        std::optional<QByteArray> bytes;
        bool isText = false;
        doApart(FileState::of(file.descriptor()).size, [&] {
            bytes = bytesOfFile(file, &reason);
            isText = bytes && (text == Text::Any || isUtf8(*bytes));
        });
        if (!bytes) {
            fail(error, readError(path, reason));
            return {};
        }
        if (!isText) {
            fail(error,
                 readError(path, Texts::tr("It is not UTF-8 text."),
                           Texts::tr("Convert the file to UTF-8 in a text editor and open it again.")));
            return {};
        }
        return bytes;
    } catch (const std::bad_alloc &) {
        fail(error, notEnoughMemory(path));
        return {};
    }
}

} // namespace

std::optional<QByteArray> readWholeFile(const QString &path, Error *error)
{
    return readFile(path, Text::Any, error);
}

std::optional<QByteArray> readUtf8File(const QString &path, Error *error)
{
    return readFile(path, Text::Utf8, error);
}

std::optional<InfoList> GlyphDataReader::read(const QString &path, Error *error)
{
    std::optional<QByteArray> bytes = readUtf8File(path, error);
    if (!bytes)
        return {};
    try {
        return read(*std::exchange(bytes, QByteArray()));
    } catch (const std::bad_alloc &) {
        fail(error, notEnoughMemory(path));
        return {};
    }
}

InfoList GlyphDataReader::read(const QByteArray &utf8)
{
    m_notes = {};
    m_notes.mostNotes = m_mostNotes;
    m_fileVersion = 2;
    const std::string_view text(utf8.constData(), static_cast<std::size_t>(utf8.size()));
    m_notes.hasByteOrderMark = text.starts_with("\xEF\xBB\xBF");

    const std::size_t body = text.find("<glyph ");
    if (body == text.npos) {
        m_notes.hasForeignHeader = isForeignWithoutRecords(text);
        if (hasConflictMarker(text))
            noteConflicts(text, markersIn(text), {}, m_notes);
        return {};
    }
    const std::string_view header = text.substr(0, body);
    const quint8 headerVersion = versionOfHeader(header);

    m_notes.isCutOff = text.rfind("</glyphData>") == text.npos;
    GlyphLines lines;
    doApart(utf8.size(), [&] {
        const qsizetype begin = qsizetype(body);
        lines = readGlyphLines(utf8, begin, usefulStretches(utf8.size() - begin), m_mostNotes);
    });
    reportUnknown(lines.notes);
    m_notes.append(lines.notes, 0);
    std::vector<qsizetype> markers = markersIn(header);
    markers.insert(markers.end(), lines.markers.begin(), lines.markers.end());
    if (!markers.empty())
        noteConflicts(text, markers, lines.infos, m_notes);
    m_fileVersion = headerVersion ? headerVersion : lines.versionHint ? lines.versionHint : 2;
    doApart(utf8.size(), [&] { noteUnkept(lines.infos, m_fileVersion, m_notes); });
    std::string_view plainHeader = header;
    while (!plainHeader.empty() && plainHeader.back() == '\t')
        plainHeader.remove_suffix(1);
    m_notes.hasForeignHeader = plainHeader != GlyphDataWriter::header(m_fileVersion);
    return std::move(lines.infos);
}

} // namespace runebook
