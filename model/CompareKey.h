#pragma once

#include "model/VXGlyphInfo.h"

#include <optional>
#include <string>
#include <string_view>

namespace runebook {

/// The property that identifies a glyph across documents; the numbers are those of the default "FilterKey".
enum class CompareKey { Name = 0, Unicode = 1, Production = 2 };

/// "name", "unicode" or "production".
QString propertyOfKey(CompareKey key);
/// The key that a person means by one of these words; nothing for any other word.
std::optional<CompareKey> compareKeyFromWord(QStringView word);
/// The key of a record as UTF-8, empty when it has none. Valid as long as the record and \a buffer stay.
std::string_view keyUtf8(const VXGlyphInfo &info, CompareKey key, std::string &buffer);

} // namespace runebook
