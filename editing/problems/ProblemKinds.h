#pragma once

#include <QString>
#include <array>
#include <optional>

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
    CircularComponent, ///< composed of something that is composed of it
    AmbiguousComponent, ///< several records have that name
    MissingMark, ///< among the marks: no record has that name
    DuplicateProduction,
    UnknownCategory,
    UnknownSubCategory,
    UnknownScript,
    // of saving and reading again
    QuoteOrBreak, ///< a double quote or a line break, which ends a value in a file
    LostValue, ///< another value that does not come back as it is
    // hints: opinions on what was meant, which may have their reasons
    UnicodeCase, ///< the first code point is a letter of the other case
    UnicodeScript,
    UnicodeDirection,
    UnicodeDecomposition, ///< a component that the character has not
    UnicodeDescription, ///< the description is the name of another character
    UnicodeProduction, ///< the production name is that of another code point
    OneSidedAnchor, ///< no record has the anchor that it would meet
    FontName, ///< what a font would call the glyph, font formats do not take
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

inline constexpr ProblemKind kFirstHint = ProblemKind::UnicodeCase;

/// Hints are counted apart from problems: nothing breaks by them.
constexpr bool isHint(ProblemKind kind)
{
    return kind >= kFirstHint && kind < kFirstReadProblem;
}

/// A set of kinds, a bit for each.
using ProblemKindSet = quint64;
constexpr ProblemKindSet setOf(ProblemKind kind)
{
    return ProblemKindSet(1) << static_cast<int>(kind);
}
inline constexpr ProblemKindSet kAllProblemKinds = (ProblemKindSet(1) << kProblemKindCount) - 1;
inline constexpr ProblemKindSet kHintKinds = setOf(kFirstReadProblem) - setOf(kFirstHint);
/// Those that follow from the records.
inline constexpr ProblemKindSet kRecordKinds = setOf(kFirstReadProblem) - 1;
/// Those that somebody may want not to hear of; what a file loses is always told.
inline constexpr ProblemKindSet kOptionalKinds =
    kRecordKinds & ~(setOf(ProblemKind::QuoteOrBreak) | setOf(ProblemKind::LostValue));

inline constexpr auto allProblemKinds()
{
    std::array<ProblemKind, kProblemKindCount> kinds {};
    for (std::size_t i = 0; i < kinds.size(); ++i)
        kinds[i] = static_cast<ProblemKind>(i);
    return kinds;
}

/// For programs: "duplicate-name". Never translated, never changed.
QLatin1StringView idOfProblemKind(ProblemKind kind);
/// The kind of that id; nothing for none.
std::optional<ProblemKind> problemKindOfId(QStringView id);
/// For lists of kinds: "Duplicate names".
QString titleOfProblemKind(ProblemKind kind);
/// What the kind means and why it matters, in a sentence.
QString meaningOfProblemKind(ProblemKind kind);

} // namespace runebook
