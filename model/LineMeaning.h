#pragma once

#include <string_view>

namespace runebook {

/// Whether an ordinary XML reader takes two glyph lines for the same: the known attributes and their values
/// whatever their order and their old names, and no text between tags. For lines that are not in the
/// program's own form, to find out what a save would make of them; records are never read this way. A line
/// that is not well-formed is like no other; unknown attributes do not count.
bool haveSameMeaning(std::string_view line, std::string_view other);

} // namespace runebook
