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

} // namespace runebook
