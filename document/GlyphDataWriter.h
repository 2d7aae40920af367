#pragma once

#include "model/GlyphLineWriter.h"
#include "model/VXGlyphInfo.h"
#include "platform/documents/FileSaver.h"

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

    /// About how many bytes that is, without printing anything.
    static qint64 sizeOf(const InfoList &infos, quint8 fileVersion);

    static std::string header(quint8 fileVersion);
    static std::string_view footer();

private:
    const InfoList *m_infos;
    quint8 m_fileVersion;
};

} // namespace runebook
