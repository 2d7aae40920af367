#pragma once

#include "model/GlyphLineWriter.h"
#include "model/VXGlyphInfo.h"
#include "platform/FileSaver.h"
#include "platform/SlicedContent.h"

#include <functional>
#include <string>

namespace runebook {

/// Produces the text of a glyph data file in large blocks.
class GlyphDataWriter
{
public:
    /// \a infos must stay as it is until the text was produced.
    GlyphDataWriter(const InfoList &infos, quint8 fileVersion) : m_infos(&infos), m_fileVersion(fileVersion)
    {
    }

    /// Always has something to say; stops when the sink refuses a block.
    bool operator()(const BlockSink &sink, Error *error) const;

    static std::string header(quint8 fileVersion);
    static std::string_view footer();

private:
    const InfoList *m_infos;
    quint8 m_fileVersion;
};

/// Prints the text of a glyph data file a little at a time.
class GlyphDataSlices : public SlicedContent
{
public:
    /// \a infos must stay while this lives; \a isCurrent tells whether it is still as it was.
    GlyphDataSlices(const InfoList &infos, quint8 fileVersion, std::function<bool()> isCurrent)
        : m_infos(infos), m_writer(fileVersion), m_fileVersion(fileVersion), m_isCurrent(std::move(isCurrent))
    {
    }
    Progress printMore(std::string &output, std::chrono::microseconds budget) override;
    bool isCurrent() const override { return m_isCurrent(); }

private:
    const InfoList &m_infos;
    GlyphLineWriter m_writer;
    quint8 m_fileVersion;
    std::function<bool()> m_isCurrent;
    std::size_t m_next = 0; ///< the record to be printed next
};

} // namespace runebook
