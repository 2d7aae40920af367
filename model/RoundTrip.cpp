#include "model/RoundTrip.h"

#include "model/FieldTable.h"
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"

#include <algorithm>

namespace runebook {

namespace {

using F = GlyphField;

// The name first, as people are told of the fields in this order.
constexpr auto kWritten = fieldsBy<[](const FieldRow &row) {
    return row.field == F::Name ? 1 : isStored(row.field) ? row.filePlace : 0;
}>();

constexpr qsizetype kWrittenCodePoints = 2;

/// Whether a line begins a comment and does not end it: then the lines behind it are passed over.
bool opensComment(std::string_view line)
{
    return line.find("<!--") != line.npos && line.find("-->") == line.npos;
}

bool takesOthers(const VXGlyphInfo &info)
{
    return std::any_of(std::begin(kWritten), std::end(kWritten),
                       [&info](F field) { return RoundTrip::takesOthers(info, field); });
}

bool isBroken(const VXGlyphInfo &info)
{
    return std::any_of(std::begin(kWritten), std::end(kWritten),
                       [&info](F field) { return RoundTrip::hasQuoteOrBreak(info, field); });
}

} // namespace

bool RoundTrip::isSameList(const VXGlyphInfo &a, const VXGlyphInfo &b, F field) const
{
    if (field == F::Unicodes) {
        const QStringList written = a.unicodes();
        return (m_of == Of::Values && written.size() > kWrittenCodePoints) || written == b.unicodes();
    }
    // A list of one empty text is written like no list at all, and means the same.
    return a.stringValue(field) == b.stringValue(field)
        && (a.stringValue(field).isEmpty() || a.altNames() == b.altNames());
}

/// Whether \a field of \a a is the same in \a b, which was read from the line of \a a.
bool RoundTrip::isSame(const VXGlyphInfo &a, const VXGlyphInfo &b, F field) const
{
    const FieldValue &written = a.stored(field);
    const FieldValue &read = b.stored(field);
    if (written.isPiece() && read.isPiece())
        return written.bytes(a.sourceData()) == read.bytes(b.sourceData());
    if (written.isList() || read.isList())
        return isSameList(a, b, field);
    if (written.isAbsent() && read.isAbsent())
        return true;
    if (FieldValue::equal(written, a.sourceData(), read, b.sourceData()))
        return true;
    const QString text = a.stringValue(field);
    // A record without a name has nothing to lose.
    return (m_of == Of::Values && field == F::Name && text.isEmpty()) || text == b.stringValue(field)
        || (field != F::Name && text.isEmpty() && b.stored(field).isEmpty());
}

bool RoundTrip::isSameRecord(const VXGlyphInfo &a, const VXGlyphInfo &b) const
{
    return a.caseValue() == b.caseValue() && a.direction() == b.direction()
        && std::all_of(std::begin(kWritten), std::end(kWritten),
                       [&](F field) { return isSame(a, b, field); });
}

bool RoundTrip::takesOthers(const VXGlyphInfo &info, GlyphField field)
{
    if (!isStored(field))
        return false;
    std::string buffer;
    const std::string_view text = info.utf8(field, buffer);
    return text.find("<!--") != text.npos || (!info.stored(field).isPiece() && text.find("-->") != text.npos);
}

bool RoundTrip::isVeryLong(const VXGlyphInfo &info)
{
    constexpr qsizetype kLong = 1'000'000;
    return std::any_of(std::begin(kWritten), std::end(kWritten), [&info](F field) {
        const FieldValue &value = info.stored(field);
        return value.isPiece() ? static_cast<qsizetype>(value.pieceLength()) > kLong
                               : value.length(info.sourceData()) > kLong;
    });
}

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
        const std::string_view line = std::string_view(m_text).substr(begin);
        const bool hasMark = line.find("<!--") != line.npos || line.find("-->") != line.npos;
        if (hasMark && runebook::takesOthers(*infos[i]))
            outcomes[i] = Outcome::TakesOthers;
        else
            m_lines.push_back({i, begin, m_text.size() - 1});
    }
    if (m_lines.empty())
        return;
    // What is read lives no longer than this; a copy of a very long value would take longer than reading it.
    const SourcePtr source(
        new SourceBytes(QByteArray::fromRawData(m_text.data(), static_cast<qsizetype>(m_text.size()))));
    ReadNotes notes; // takes what the reader would otherwise report as an error of a file
    GlyphLineReader reader(source, &notes);
    for (const Line &line : m_lines) {
        const VXGlyphInfo &written = *infos[line.record];
        const std::string_view text(source->data() + line.begin, line.end - line.begin);
        const bool isWhole = text.find('\n') == text.npos;
        const InfoPtr read = isWhole
            ? reader.readPiece(static_cast<qsizetype>(line.begin), static_cast<qsizetype>(line.end))
            : nullptr;
        if (!read || !isSameRecord(written, *read))
            outcomes[line.record] = isBroken(written) ? Outcome::Broken : Outcome::Changed;
    }
    constexpr std::size_t kKept = 1 << 20;
    if (m_text.capacity() > kKept)
        m_text = {}; // a very long value; whoever checks may live on for long
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
        if (!isSame(info, *read, field) || (hidesLines && opensComment(info.utf8(field, buffer)))
            || takesOthers(info, field))
            losses.push_back({field, read->displayText(field)});
    }
    if (info.caseValue() != read->caseValue())
        losses.push_back({F::Case, read->displayText(F::Case)});
    if (info.direction() != read->direction())
        losses.push_back({F::Direction, read->displayText(F::Direction)});
    return losses;
}

} // namespace runebook
