#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace runebook {

/// Whether two texts hold the same lines, however these end.
bool haveSameLines(std::string_view one, std::string_view other);

/// The merge of lines that are no records: ours, unless only they changed them; where both did, ours with
/// what they added, a comment staying together. What ends the list stays the end. A view of one of the texts,
/// or of \a buffer.
std::string_view mergeOtherLines(std::string_view base, std::string_view ours, std::string_view theirs,
                                 std::string &buffer);

} // namespace runebook
