#pragma once

#include "model/VXGlyphInfo.h"

#include <string>

namespace runebook {

/// Prints records as lines of a glyph data file of one version. Values that were read and not changed go
/// from the bytes of the reading straight into the output.
class GlyphLineWriter
{
public:
    explicit GlyphLineWriter(int fileVersion) : m_fileVersion(fileVersion) { }

    /// Appends the line of \a info, line feed included, to \a output.
    void append(const VXGlyphInfo &info, std::string &output);

    /// The words that stand for a case and a direction in a file; "(null)" where there is none.
    static std::string_view caseWord(int letterCase);
    static std::string_view directionWord(int direction);

private:
    void appendAttribute(std::string_view nameAndQuote, std::string_view value, std::string &output);
    template <GlyphField Field> void appendField(const VXGlyphInfo &info, std::string &output);
    void appendText(std::string_view nameAndQuote, GlyphField field, const VXGlyphInfo &info,
                    std::string &output);
    void appendCodePoints(const VXGlyphInfo &info, std::string &output);
    bool appendsCaseAsSubCategory(const VXGlyphInfo &info, std::string &output);

    int m_fileVersion;
    std::string m_buffer;
};

} // namespace runebook
