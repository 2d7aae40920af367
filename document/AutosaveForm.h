#pragma once

#include "document/GlyphDataWriter.h"
#include "document/KeptValues.h"
#include "model/ReadNotes.h"
#include "model/RoundTrip.h"
#include "platform/documents/SlicedContent.h"

#include <QByteArray>
#include <functional>

namespace runebook {

/// The form of autosaved contents: a glyph data file, and behind its end, in a comment, the records that such
/// a file cannot hold with all their values, and how much there must be for it to be whole. In its lines
/// those records stand in by their names. Changed records with very long values stand there as well.
class AutosaveSlices : public SlicedContent
{
public:
    /// \a infos must stay while this lives; \a isCurrent tells whether it is still as it was.
    AutosaveSlices(const InfoList &infos, quint8 fileVersion, std::function<bool()> isCurrent);
    Progress printMore(std::string &output, std::chrono::microseconds budget) override;
    ContentProducer takeRest() override;
    qint64 size() const override { return GlyphDataWriter::sizeOf(m_infos, m_fileVersion); }
    bool isCurrent() const override { return m_isCurrent(); }

private:
    void printRecords(std::size_t first, std::size_t last, std::string &output);
    void printChecked(std::size_t first, std::size_t last, std::string &output);
    void appendStandIn(const VXGlyphInfo &info, std::string &output);
    std::size_t endOfSlice() const;

    const InfoList &m_infos;
    GlyphLineWriter m_writer;
    RoundTrip m_roundTrip;
    quint8 m_fileVersion;
    std::function<bool()> m_isCurrent;
    std::size_t m_next = 0; ///< the record to be printed next
    std::size_t m_printed = 0; ///< bytes of the glyph data file
    std::string m_values; ///< of records that lines cannot hold, a line each
    std::vector<KeptValues> m_long; ///< what another thread prints behind them
    std::vector<VXGlyphInfo *> m_slice;
    std::vector<RoundTrip::Outcome> m_outcomes;
};

/// What lies in an autosaved content.
struct AutosavedContent {
    InfoList infos;
    quint8 fileVersion = 2;
    ReadNotes notes;
    bool isWhole = true; ///< as many records and bytes as it says, all of their values readable
};

/// The form of \a infos at once.
QByteArray autosavedContentOf(const InfoList &infos, quint8 fileVersion);

/// Reads an autosaved content, which must be UTF-8: of a damaged one what can be read. One without the
/// comment is a glyph data file, and whole.
AutosavedContent readAutosavedContent(const QByteArray &utf8);

} // namespace runebook
