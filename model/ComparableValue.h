#pragma once

#include "model/VXGlyphInfo.h"

#include <optional>
#include <string>
#include <string_view>

namespace runebook {

/// A value that is equal for equal texts, lists or numbers, and for no others; nothing for an absent or empty
/// value.
/// Valid as long as the record and \a buffer stay.
std::optional<std::string_view> comparableValue(const VXGlyphInfo &info, GlyphField field,
                                                std::string &buffer);

/// Whether two records have the same comparable value in a field, or none. Mostly told without making it: the
/// values of two files are the same bytes.
bool haveEqualValues(const VXGlyphInfo &left, const VXGlyphInfo &right, GlyphField field);

} // namespace runebook
