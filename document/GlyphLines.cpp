#include "document/GlyphLines.h"

#include "document/ConflictMarkers.h"
#include "model/GlyphLineReader.h"
#include "platform/ParallelParts.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>

namespace runebook {

namespace {

constexpr std::string_view kEndOfList = "</glyphData>";

/// The lines of one stretch of a file, and what is in them. Several stretches can be read at the same time.
class Stretch
{
public:
    Stretch(const QByteArray &utf8, qsizetype begin, qsizetype end)
        : m_source(new SourceBytes(utf8)), m_reader(m_source, &notes), m_begin(begin), m_end(end)
    {
    }
    Stretch(const Stretch &) = delete;
    Stretch &operator=(const Stretch &) = delete;

    void read();
    quint8 versionHint() const { return m_reader.versionHint(); }

    InfoList infos;
    ReadNotes notes;
    std::vector<qsizetype> markers;
    bool endsInComment = false;

private:
    void readLine(qsizetype begin, qsizetype end);

    // Each has a holder of its own: threads that count the users of one would wait for each other.
    SourcePtr m_source;
    GlyphLineReader m_reader;
    qsizetype m_begin;
    qsizetype m_end;
};

void Stretch::read()
{
    const char *data = m_source->data();
    for (qsizetype begin = m_begin; begin < m_end;) {
        const void *feed = std::memchr(data + begin, '\n', static_cast<std::size_t>(m_end - begin));
        const qsizetype end = feed ? static_cast<const char *>(feed) - data : m_end;
        const std::string_view line(data + begin, static_cast<std::size_t>(end - begin));
        if (endsInComment) {
            endsInComment = line.find("-->") == line.npos;
        } else {
            // Only a line with a comment can be another than the usual one.
            endsInComment = m_reader.hasComment(begin, end) && line.find("-->") == line.npos;
            notes.hasCarriageReturns |= line.ends_with('\r');
            readLine(begin, end);
        }
        begin = end + 1;
    }
}

void Stretch::readLine(qsizetype begin, qsizetype end)
{
    if (InfoPtr info = m_reader.readPiece(begin, end)) {
        if (infos.empty())
            infos.reserve(static_cast<std::size_t>((m_end - begin) / (end + 1 - begin)) + 16);
        infos.push_back(std::move(info));
    } else if (const std::string_view foreign = m_reader.lastPiece();
               conflictMarker(foreign) != ConflictMarker::None) {
        markers.push_back(foreign.data() - m_source->data());
    } else if (!foreign.empty() && foreign != kEndOfList) {
        notes.add(ReadNotes::ForeignLine, static_cast<qsizetype>(infos.size()),
                  QString::fromUtf8(foreign.data(), qMin<qsizetype>(std::ssize(foreign), 400)), begin);
    }
}

using Stretches = std::vector<std::unique_ptr<Stretch>>;

/// Reads the lines from \a begin on in so many stretches, all at the same time.
Stretches readInStretches(const QByteArray &utf8, qsizetype begin, qsizetype count, std::size_t mostNotes)
{
    Stretches stretches;
    const qsizetype usualSize = (utf8.size() - begin) / count + 1;
    do {
        const qsizetype feed = utf8.indexOf('\n', begin + usualSize);
        const qsizetype end = feed < 0 ? utf8.size() : feed + 1;
        stretches.push_back(std::make_unique<Stretch>(utf8, begin, end));
        stretches.back()->notes.mostNotes = mostNotes;
        begin = end;
    } while (begin < utf8.size());
    inParallel(std::ssize(stretches), [&stretches](qsizetype i) { stretches[std::size_t(i)]->read(); });
    return stretches;
}

GlyphLines joined(const Stretches &stretches)
{
    GlyphLines lines;
    lines.notes.mostNotes = stretches.front()->notes.mostNotes;
    std::size_t count = 0;
    for (const auto &stretch : stretches)
        count += stretch->infos.size();
    lines.infos.reserve(count);
    for (const auto &stretch : stretches) {
        lines.notes.append(stretch->notes, static_cast<qsizetype>(lines.infos.size()));
        std::move(stretch->infos.begin(), stretch->infos.end(), std::back_inserter(lines.infos));
        lines.markers.insert(lines.markers.end(), stretch->markers.begin(), stretch->markers.end());
        if (stretch->versionHint())
            lines.versionHint = stretch->versionHint();
    }
    return lines;
}

} // namespace

qsizetype usefulStretches(qsizetype bytes)
{
    constexpr qsizetype kSmallest = 2 << 20; // less is read before another thread has started
    return usefulParts(bytes, kSmallest);
}

GlyphLines readGlyphLines(const QByteArray &utf8, qsizetype begin)
{
    return readGlyphLines(utf8, begin, usefulStretches(utf8.size() - begin));
}

GlyphLines readGlyphLines(const QByteArray &utf8, qsizetype begin, qsizetype stretches, std::size_t mostNotes)
{
    const Stretches read = readInStretches(utf8, begin, qMax(stretches, qsizetype(1)), mostNotes);
    // Where a comment goes on into the next stretch, that one was read wrongly.
    const bool isCut = std::any_of(read.begin(), std::prev(read.end()),
                                   [](const auto &stretch) { return stretch->endsInComment; });
    return isCut ? joined(readInStretches(utf8, begin, 1, mostNotes)) : joined(read);
}

} // namespace runebook
