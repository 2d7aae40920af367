#pragma once

#include <QString>
#include <array>

namespace runebook {

/// What can be wrong with a record, a file that was read, or what a save would make of it.
enum class ProblemKind : quint8 {
    // of names
    MissingName, ///< none, or still the one that records without a name are given
    InvalidName,
    DuplicateName,
    LongName, ///< longer than font formats hold
    RepeatingAltName, ///< an alternate name that is some record's name
    // of code points
    InvalidCodePoint,
    DuplicateCodePoint,
    ManyCodePoints, ///< more than the two that a file keeps
    // of what is meant: other records, and the fixed words
    MissingComponent, ///< of a composition: no record has that name
    SelfReference, ///< composed with itself
    UnknownCategory,
    UnknownSubCategory,
    UnknownScript,
    // of saving and reading again
    QuoteOrBreak, ///< a double quote or a line break, which ends a value in a file
    LostValue, ///< another value that does not come back as it is
    // of the file that was read, until it is saved
    Comment,
    UnknownAttribute,
    UnreadRest,
    DroppedAttribute,
    ForeignLine,
    OtherMeaning, ///< a line that another program takes for something else
    Conflict, ///< what two sides did differently, not yet resolved
    TableProblem, ///< a row of a table that is no record, or a cell that is no value
    FileForm, ///< the file as a whole
};

inline constexpr int kProblemKindCount = static_cast<int>(ProblemKind::FileForm) + 1;
/// The kinds before this one follow from the records as they are now.
inline constexpr ProblemKind kFirstReadProblem = ProblemKind::Comment;

inline constexpr auto allProblemKinds()
{
    std::array<ProblemKind, kProblemKindCount> kinds {};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        kinds[i] = static_cast<ProblemKind>(i);
    return kinds;
}

/// For programs: "duplicate-name". Never translated, never changed.
QLatin1StringView idOfProblemKind(ProblemKind kind);
/// For lists of kinds: "Duplicate names".
QString titleOfProblemKind(ProblemKind kind);
/// What the kind means and why it matters, in a sentence.
QString meaningOfProblemKind(ProblemKind kind);

} // namespace runebook
