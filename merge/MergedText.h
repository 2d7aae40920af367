#pragma once

#include "merge/ThreeWayMerge.h"
#include "platform/documents/FileSaver.h"

namespace runebook {

/// The text of a merge as a whole; with \a conflicts, what that side has stands for conflicts that are open.
QByteArray textOf(const ThreeWayMerge &merge, std::optional<MergeSide> conflicts = {});

/// Writes the text of a merge: stretches of our bytes as they stand, in between what is taken from their
/// side, put together, or in conflict. Every line that is not ours gets our line ends;
/// unresolved conflicts stand between markers.
class MergedText
{
public:
    /// Both must stay.
    MergedText(const ThreeWayMerge &merge, const BlockSink &sink, std::optional<MergeSide> conflicts = {});
    /// Always has something to say; stops, and answers false, when the sink refuses a block.
    bool write();

private:
    void writeHeader();
    void writeTail();
    void writeGap(const RecordMerge &merge);
    void writeRecord(const RecordMerge &merge);
    void writeConflict(const RecordMerge &merge);
    /// The line of one side of a conflict, or nothing where that side lacks the record.
    void addSide(const RecordMerge &merge, MergeSide side);
    void addRecordLine(MergeSide side, MergePlace place);
    void addPrinted(const VXGlyphInfo &info);
    void addMarker(char character, MergeSide side);

    /// Bytes of our side that follow each other go out together.
    void addOurs(std::string_view bytes);
    /// Whole lines of any side.
    void addLines(std::string_view lines);
    void addLine(std::string_view line);
    void beginLine();
    void append(std::string_view bytes);
    void flush();
    void put(std::string_view block);

    const ThreeWayMerge &m_merge;
    const BlockSink &m_sink;
    std::optional<MergeSide> m_conflicts; ///< who is right in them
    std::string_view m_lineEnd;
    std::string_view m_stretch; ///< of our side, not yet written
    std::string m_block;
    std::string m_buffer;
    char m_last = '\n';
    bool m_isGood = true;
};

} // namespace runebook
