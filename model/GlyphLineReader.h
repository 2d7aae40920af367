#pragma once

#include "model/GlyphReading.h"
#include "model/ReadNotes.h"

#include <string_view>

namespace runebook {

struct KnownAttribute;

/// Reads glyph lines out of one block of bytes. The records keep pointing into the block; nothing is copied
/// that nobody looks at.
class GlyphLineReader
{
public:
    /// \a source must be valid UTF-8. \a notes, if given, gathers what the records cannot keep, and
    /// keeps the report of unknown attributes for later; readers of one block may then work in threads.
    explicit GlyphLineReader(SourcePtr source, ReadNotes *notes = nullptr);

    /// The record of the piece [begin, end) between two line feeds of the block, white space and line ends
    /// around it left out.
    InfoPtr readPiece(qsizetype begin, qsizetype end);
    /// What was read last, without the white space around it.
    std::string_view lastPiece() const { return m_lastPiece; }

    /// The record of the line [begin, end) of the block, trimmed; null when it does not begin as a glyph
    /// line. \a isWholeLine tells that "\t" stands before and a line feed after it, and nothing else on
    /// that line: then the line may be written again as it stands.
    InfoPtr read(qsizetype begin, qsizetype end, bool isWholeLine);

    /// Whether a comment begins in [begin, end) of the block.
    bool hasComment(qsizetype begin, qsizetype end);

    /// 1 once a line had an "accents" attribute, 2 once one had "case", whichever came last; 0 before.
    quint8 versionHint() const { return m_versionHint; }

private:
    struct Attribute {
        std::string_view key;
        std::string_view value;
        const KnownAttribute &known;
    };
    enum class After { GoOn, LookForEnd };

    VXGlyphInfo::Reading readWithoutComments(std::string_view line);
    /// Reads a line that stands as the writer prints it, as nearly all do; false when it does not, with the
    /// record in any state.
    bool scanAsWritten(VXGlyphInfo::Reading &glyph, std::string_view line);
    bool applyAsWritten(VXGlyphInfo::Reading &glyph, const KnownAttribute &known, std::string_view value,
                        quint8 &versionHint);
    /// Reads any line, whatever it holds.
    void scan(VXGlyphInfo::Reading &glyph, std::string_view line, bool isWholeLine);
    After apply(VXGlyphInfo::Reading &glyph, const Attribute &attribute);
    void reportUnknown(VXGlyphInfo::Reading &glyph, const Attribute &attribute);
    void addCodePoint(VXGlyphInfo::Reading &glyph, std::string_view value);
    void noteOrder(int rank);
    /// Notes what an XML reader would take for something else than what is printed for the record; for lines
    /// that another note tells of already that is enough.
    void noteForm(const VXGlyphInfo &info, std::string_view line);
    void note(ReadNotes::Kind kind, std::string_view text);

    SourcePtr m_source;
    ReadNotes *m_notes;
    std::string_view m_lastPiece;
    // The stretch of the block that was searched for comments last, and the first one in it or -1.
    qsizetype m_searchedBegin = 0;
    qsizetype m_searchedEnd = 0;
    qsizetype m_firstComment = -1;
    qsizetype m_records = 0;
    qsizetype m_lineOffset = 0; ///< of the line being read, in the bytes of the file
    quint8 m_versionHint = 0;
    // Of the line being read: whether it is, so far, what the writer would print for each kind of version.
    quint8 m_lineVersions = 0;
    bool m_isNoted = false; ///< whether something that is not kept was noted
    bool m_isTold = false; ///< the same, unknown attributes apart
    bool m_isOdd = false; ///< whether it is written in a way that an XML reader may read differently
    bool m_isOtherWord = false; ///< whether a word of it is printed as another one, or one too many
    int m_lastRank = 0;
    quint32 m_seenFields = 0;
};

} // namespace runebook
