#include "model/RoundTrip.h"

#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"

#include <algorithm>

namespace runebook {

namespace {

using F = GlyphField;

constexpr F kWritten[] {F::Name,         F::Unicodes,  F::UnicodeLegacy, F::SortName,    F::SortNameOld,
                        F::SortNameKeep, F::Decompose, F::Category,      F::SubCategory, F::Script,
                        F::Production,   F::AltNames,  F::Desc,          F::Anchors,     F::Marks};

constexpr qsizetype kWrittenCodePoints = 2;

bool isSameList(const VXGlyphInfo &a, const VXGlyphInfo &b, F field)
{
    if (field == F::Unicodes) {
        const QStringList written = a.unicodes();
        return written.size() > kWrittenCodePoints || written == b.unicodes();
    }
    // A list of one empty text is written like no list at all, and means the same.
    return a.stringValue(field) == b.stringValue(field)
        && (a.stringValue(field).isEmpty() || a.altNames() == b.altNames());
}

/// Whether \a field of \a a is the same in \a b, which was read from the line of \a a.
bool isSame(const VXGlyphInfo &a, const VXGlyphInfo &b, F field)
{
    const FieldValue &written = a.stored(field);
    const FieldValue &read = b.stored(field);
    if (written.isPiece() && read.isPiece())
        return written.bytes(a.sourceData()) == read.bytes(b.sourceData());
    if (written.isList() || read.isList())
        return isSameList(a, b, field);
    if (written.isAbsent() && read.isAbsent())
        return true;
    const QString text = a.stringValue(field);
    // A record without a name has nothing to lose.
    return (field == F::Name && text.isEmpty()) || text == b.stringValue(field)
        || (text.isEmpty() && b.stored(field).isEmpty());
}

bool isSameRecord(const VXGlyphInfo &a, const VXGlyphInfo &b)
{
    return a.caseValue() == b.caseValue() && a.direction() == b.direction()
        && std::all_of(std::begin(kWritten), std::end(kWritten),
                       [&](F field) { return isSame(a, b, field); });
}

/// Whether a line begins a comment and does not end it: then the lines behind it are passed over.
bool opensComment(std::string_view line)
{
    return line.find("<!--") != line.npos && line.find("-->") == line.npos;
}

bool isBroken(const VXGlyphInfo &info)
{
    return std::any_of(std::begin(kWritten), std::end(kWritten),
                       [&info](F field) { return RoundTrip::hasQuoteOrBreak(info, field); });
}

} // namespace

std::span<const GlyphField> RoundTrip::writtenFields()
{
    return kWritten;
}

bool RoundTrip::hasQuoteOrBreak(const VXGlyphInfo &info, GlyphField field)
{
    std::string buffer;
    return info.utf8(field, buffer).find_first_of("\"\n") != std::string_view::npos;
}

void RoundTrip::check(std::span<VXGlyphInfo *const> infos, std::vector<Outcome> &outcomes)
{
    outcomes.assign(infos.size(), Outcome::Same);
    m_text.clear();
    m_lines.clear();
    GlyphLineWriter writer(m_fileVersion);
    for (std::size_t i = 0; i < infos.size(); ++i) {
        if (!infos[i]->unchangedLine(m_fileVersion).empty())
            continue; // it is the line that was read
        const std::size_t begin = m_text.size();
        writer.append(*infos[i], m_text);
        m_lines.push_back({i, begin, m_text.size() - 1});
    }
    if (m_lines.empty())
        return;
    const SourcePtr source(new SourceBytes(QByteArray(m_text.data(), static_cast<qsizetype>(m_text.size()))));
    ReadNotes notes; // takes what the reader would otherwise report as an error of a file
    GlyphLineReader reader(source, &notes);
    for (const Line &line : m_lines) {
        const VXGlyphInfo &written = *infos[line.record];
        const std::string_view text(source->data() + line.begin, line.end - line.begin);
        const bool isWhole = text.find('\n') == text.npos && !opensComment(text);
        const InfoPtr read = isWhole
            ? reader.readPiece(static_cast<qsizetype>(line.begin), static_cast<qsizetype>(line.end))
            : nullptr;
        if (!read || !isSameRecord(written, *read))
            outcomes[line.record] = isBroken(written) ? Outcome::Broken : Outcome::Changed;
    }
}

std::vector<RoundTrip::Loss> RoundTrip::losses(const VXGlyphInfo &info) const
{
    std::vector<Loss> losses;
    std::string text;
    GlyphLineWriter(m_fileVersion).append(info, text);
    const SourcePtr source(new SourceBytes(QByteArray(text.data(), static_cast<qsizetype>(text.size()))));
    ReadNotes notes;
    GlyphLineReader reader(source, &notes);
    const qsizetype end = static_cast<qsizetype>(std::min(text.find('\n'), text.size()));
    const InfoPtr read = reader.readPiece(0, end);
    if (!read)
        return losses;
    const bool hidesLines = opensComment(text);
    std::string buffer;
    for (const F field : kWritten) {
        if (!isSame(info, *read, field) || (hidesLines && opensComment(info.utf8(field, buffer))))
            losses.push_back({field, read->displayText(field)});
    }
    for (const F field : {F::Case, F::Direction}) {
        if (info.displayText(field) != read->displayText(field))
            losses.push_back({field, read->displayText(field)});
    }
    return losses;
}

} // namespace runebook
