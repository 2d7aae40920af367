#pragma once

#include "editing/problems/ProblemKinds.h"
#include "model/VXGlyphInfo.h"

namespace runebook {

/// What a record says against Unicode, by its first code point. Only what is said can be wrong: an empty
/// field is none, and so is what Unicode leaves open, such as the script of punctuation.
class UnicodeChecks
{
public:
    /// The hints of \a info that one record alone tells: a set of kinds.
    static ProblemKindSet hintsOf(const VXGlyphInfo &info, std::optional<char32_t> codePoint);
    /// Whether a production name stands for other code points than the record has.
    static bool isOfOtherCharacter(const QString &production, const VXGlyphInfo &info);
    /// Whether font formats take \a name for a glyph.
    static bool isFontName(std::string_view name);
    /// What a font would call the glyph: the production name, else the name.
    static QString fontName(const VXGlyphInfo &info);
};

} // namespace runebook
