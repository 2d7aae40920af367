#pragma once

#include <string_view>
#include <vector>

namespace runebook {

/// Lines by which version control marks what two sides did differently: seven or more of a character, alone
/// or with a label behind a blank.
///
///     <<<<<<< ours
///     ||||||| base        (may be missing, with what follows it)
///     =======
///     >>>>>>> theirs
enum class ConflictMarker { None, Ours, Base, Theirs, End };
/// What the line is, whatever white space stands at its end; \a size is the number of the characters then.
ConflictMarker conflictMarker(std::string_view line, std::size_t *size = nullptr);
inline bool isConflictMarker(std::string_view line)
{
    const ConflictMarker marker = conflictMarker(line);
    return marker == ConflictMarker::Ours || marker == ConflictMarker::End;
}
/// Whether a conflict begins or ends in \a text.
bool hasConflictMarker(std::string_view text);

/// A conflict in a text, all as views into that.
struct Conflict {
    std::string_view whole; ///< from marker to marker, the line ends included
    std::string_view ours; ///< whole lines
    std::string_view base; ///< the same; with no data where that part is missing
    std::string_view theirs;
    std::string_view oursLabel, baseLabel, theirsLabel;
};
/// The conflicts of \a text, and in \a strays where the lines begin that look like markers of a conflict but
/// belong to none: of one that was begun and not ended, or the other way round. Markers of one conflict have
/// the same size; others within it belong to its sides.
std::vector<Conflict> conflictsIn(std::string_view text, std::vector<std::size_t> *strays = nullptr);

} // namespace runebook
