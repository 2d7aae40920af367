#include "merge/MergedText.h"

#include "merge/OtherLines.h"
#include "model/GlyphLineWriter.h"

#include <functional>

namespace runebook {

namespace {

constexpr std::size_t kBlock = 1 << 20;
/// Shorter stretches are gathered.
constexpr std::size_t kOwnBlock = 1 << 16;

} // namespace

QByteArray textOf(const ThreeWayMerge &merge, std::optional<MergeSide> conflicts)
{
    QByteArray text;
    const BlockSink sink = [&text](std::string_view block) {
        text.append(block.data(), qsizetype(block.size()));
        return true;
    };
    MergedText(merge, sink, conflicts).write();
    return text;
}

MergedText::MergedText(const ThreeWayMerge &merge, const BlockSink &sink, std::optional<MergeSide> conflicts)
    : m_merge(merge), m_sink(sink), m_conflicts(conflicts)
{
    for (const MergeSide side : {MergeSide::Ours, MergeSide::Theirs, MergeSide::Base}) {
        if (m_lineEnd.empty())
            m_lineEnd = merge.tables()[side].lineEnd();
    }
    if (m_lineEnd.empty())
        m_lineEnd = "\n";
}

bool MergedText::write()
{
    const MergeTables &tables = m_merge.tables();
    const bool hasGaps = tables.base().hasGaps() || tables.ours().hasGaps() || tables.theirs().hasGaps();
    writeHeader();
    for (const MergeItem &item : m_merge.items()) {
        const bool isPlain = item.merge == kNoPlace;
        if (isPlain && !hasGaps) {
            addOurs(tables.ours().wholeLine(item.record.place));
            continue;
        }
        // A record that nobody changed may still stand behind lines that somebody did.
        RecordMerge plain;
        if (isPlain)
            plain.places = m_merge.placesOf(item);
        const RecordMerge &merge = isPlain ? plain : m_merge.records()[item.merge];
        if (hasGaps)
            writeGap(merge);
        writeRecord(merge);
        if (!m_isGood)
            return false;
    }
    writeTail();
    flush();
    if (!m_block.empty())
        put(m_block);
    return m_isGood;
}

void MergedText::writeHeader()
{
    if (!m_merge.isHeaderInConflict()) {
        addLines(m_merge.header());
        return;
    }
    const MergeTables &tables = m_merge.tables();
    if (m_conflicts) {
        addLines(tables[*m_conflicts].header());
        return;
    }
    addMarker('<', MergeSide::Ours);
    addLines(tables.ours().header());
    addMarker('|', MergeSide::Base);
    addLines(tables.base().header());
    addMarker('=', MergeSide::Theirs);
    addLines(tables.theirs().header());
    addMarker('>', MergeSide::Theirs);
}

void MergedText::writeTail()
{
    const MergeTables &tables = m_merge.tables();
    addLines(mergeOtherLines(tables.base().tail(), tables.ours().tail(), tables.theirs().tail(), m_buffer));
}

void MergedText::writeGap(const RecordMerge &merge)
{
    const auto gapOf = [&](const MergeTable &table, MergePlace place) {
        return place == kNoPlace ? std::string_view() : table.gapBefore(place);
    };
    const MergeTables &tables = m_merge.tables();
    addLines(mergeOtherLines(gapOf(tables.base(), merge.places.base), gapOf(tables.ours(), merge.places.ours),
                             gapOf(tables.theirs(), merge.places.theirs), m_buffer));
}

void MergedText::writeRecord(const RecordMerge &merge)
{
    switch (merge.result) {
    case RecordMerge::Result::OursLine:
        addRecordLine(MergeSide::Ours, merge.places.ours);
        break;
    case RecordMerge::Result::TheirsLine:
        addRecordLine(MergeSide::Theirs, merge.places.theirs);
        break;
    case RecordMerge::Result::Fields:
        addPrinted(*mergedRecord(m_merge.tables(), merge, MergeSide::Ours));
        break;
    case RecordMerge::Result::Conflict:
        writeConflict(merge);
        break;
    case RecordMerge::Result::Nothing:
        break;
    }
}

void MergedText::writeConflict(const RecordMerge &merge)
{
    if (m_conflicts) {
        addSide(merge, *m_conflicts);
        return;
    }
    addMarker('<', MergeSide::Ours);
    addSide(merge, MergeSide::Ours);
    addMarker('|', MergeSide::Base);
    addSide(merge, MergeSide::Base);
    addMarker('=', MergeSide::Theirs);
    addSide(merge, MergeSide::Theirs);
    addMarker('>', MergeSide::Theirs);
}

void MergedText::addSide(const RecordMerge &merge, MergeSide side)
{
    if (side != MergeSide::Base) {
        RecordMerge resolved = merge;
        resolveRecord(m_merge.tables(), resolved, side);
        writeRecord(resolved);
        return;
    }
    if (merge.places.base == kNoPlace)
        return;
    if (merge.conflict == ConflictKind::Fields)
        addPrinted(*mergedRecord(m_merge.tables(), merge, side));
    else
        addRecordLine(side, merge.places.base);
}

void MergedText::addRecordLine(MergeSide side, MergePlace place)
{
    const MergeTable &table = m_merge.tables()[side];
    const std::string_view line = table.line(place);
    constexpr quint8 kOldest = 1;
    // Version 1 has another word for marks.
    if (m_merge.fileVersion() > kOldest && table.headerVersion() == kOldest
        && line.find(" accents=\"") != line.npos) {
        bool isWhole = true;
        const InfoPtr info = m_merge.tables().read(side, place, &isWhole);
        if (isWhole) {
            addPrinted(*info);
            return;
        }
    }
    if (side == MergeSide::Ours)
        addOurs(table.wholeLine(place));
    else
        addLines(table.wholeLine(place));
}

void MergedText::addPrinted(const VXGlyphInfo &info)
{
    std::string line;
    GlyphLineWriter(m_merge.fileVersion()).append(info, line);
    addLines(line);
}

void MergedText::addMarker(char character, MergeSide side)
{
    std::string line(std::size_t(m_merge.options().markerSize), character);
    const QString &label = m_merge.options().labels[std::size_t(side)];
    if (character != '=' && !label.isEmpty())
        line += ' ' + label.toStdString();
    addLine(line);
}

void MergedText::addOurs(std::string_view bytes)
{
    if (bytes.empty())
        return;
    if (m_stretch.data() + m_stretch.size() == bytes.data() && !m_stretch.empty()) {
        m_stretch = {m_stretch.data(), m_stretch.size() + bytes.size()};
        return;
    }
    beginLine();
    m_stretch = bytes;
}

void MergedText::addLines(std::string_view lines)
{
    const QByteArray &ours = m_merge.tables().ours().bytes();
    const bool isOurs = !std::less<>()(lines.data(), ours.constData())
        && std::less<>()(lines.data(), ours.constData() + ours.size());
    if (isOurs) {
        addOurs(lines);
        return;
    }
    while (!lines.empty()) {
        const std::size_t feed = lines.find('\n');
        std::string_view line = lines.substr(0, feed);
        lines.remove_prefix(feed == lines.npos ? lines.size() : feed + 1);
        beginLine();
        if (feed == std::string_view::npos) { // the end of a file
            append(line);
            return;
        }
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        append(line);
        append(m_lineEnd);
    }
}

void MergedText::addLine(std::string_view line)
{
    beginLine();
    append(line);
    append(m_lineEnd);
}

/// The last line of a file may have no end.
void MergedText::beginLine()
{
    flush();
    if (m_last != '\n')
        append(m_lineEnd);
}

void MergedText::flush()
{
    if (m_stretch.empty())
        return;
    const std::string_view stretch = std::exchange(m_stretch, {});
    append(stretch);
}

void MergedText::append(std::string_view bytes)
{
    if (bytes.empty())
        return;
    m_last = bytes.back();
    if (bytes.size() < kOwnBlock) {
        m_block += bytes;
        if (m_block.size() < kBlock)
            return;
        bytes = {};
    }
    if (!m_block.empty())
        put(m_block);
    m_block.clear();
    if (!bytes.empty())
        put(bytes);
}

void MergedText::put(std::string_view block)
{
    m_isGood = m_isGood && m_sink(block);
}

} // namespace runebook
