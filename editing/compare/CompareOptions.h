#pragma once

#include "editing/compare/ComparedFields.h"

namespace runebook {

/// Fields as bits, by their places in comparedFields().
using FieldBits = quint32;

/// What a comparison overlooks at the user's wish.
struct CompareOptions {
    bool ignoresCase = false; ///< "Letter" is "letter"
    bool ignoresSpaces = false; ///< "a, b" is "a,b"
    FieldBits ignoredFields = 0;

    /// Whether nothing is overlooked.
    bool isExact() const { return !ignoresCase && !ignoresSpaces && ignoredFields == 0; }
    bool ignores(GlyphField field) const;
    friend bool operator==(const CompareOptions &, const CompareOptions &) = default;
};

/// 0 for a field that is not compared.
FieldBits bitOf(GlyphField field);
/// comparableValue() without what is overlooked; nothing for a field that is.
std::optional<std::string_view> comparableValue(const VXGlyphInfo &info, GlyphField field,
                                                std::string &buffer, const CompareOptions &options);
/// The fields that differ in more than what is overlooked.
FieldBits differingBits(const VXGlyphInfo &left, const VXGlyphInfo &right, const CompareOptions &options);
/// countAsEqual() by the values that comparableValue() gives; a record without description goes on to equal
/// none, unless descriptions are overlooked.
bool countAsEqual(const InfoPtr &left, const InfoPtr &right, const CompareOptions &options);

} // namespace runebook
