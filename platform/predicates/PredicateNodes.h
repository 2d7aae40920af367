#pragma once

#include "platform/TextFolding.h"
#include "platform/predicates/PredicatePattern.h"

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace runebook {

// The tree of a parsed predicate. Whoever keeps columns of folded UTF-8 walks it column by column and asks
// the accepts() functions, or looks for the text of a TextTest in a whole column at once. Every test is about
// values that are there: an absent or empty text, an empty list is accepted by none, not even by "!=", and
// must not be handed to accepts().

/// Compares text: name contains[cd] "alt".
struct TextTest {
    enum class Relation : quint8 { Contains, BeginsWith, EndsWith, Equal, NotEqual };

    QString key;
    Relation relation = Relation::Equal;
    Folding folding;
    std::string text; ///< folded UTF-8. Empty, as a text of nothing but marks is, it occurs nowhere
    QString spelled = {}; ///< the same before folding, for those who show it

    /// For one text, as UTF-8 folded with the test's folding.
    bool accepts(std::string_view folded) const;
    /// The same for one element of a list, which has to equal the text that the list is to contain.
    bool acceptsElement(std::string_view folded) const;
};

/// Compares numbers: index >= 10. A text counts as the decimal number it spells, else it is not accepted.
struct NumberTest {
    enum class Relation : quint8 { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

    QString key;
    Relation relation = Relation::Equal;
    double number = 0;

    bool accepts(double value) const;
};

/// Asks whether a text is one of several: script IN {"latin", "greek"}.
struct ListTest {
    QString key;
    Folding folding;
    std::vector<std::string> texts; ///< folded UTF-8, ascending, each once
    QStringList spelled = {}; ///< the same as they were written, for those who show them

    /// For one text, as UTF-8 folded with the test's folding.
    bool accepts(std::string_view folded) const;
};

/// A range of code points, both ends included; empty when the first is above the last. As the argument of a
/// predicate's format it stands for all its code point texts, however many.
struct HexRange {
    quint32 first = 0;
    quint32 last = 0;

    /// True for the canonical text of a number in the range: upper-case hexadecimal, at least four digits,
    /// zeros in front only up to these four.
    bool contains(std::string_view text) const;
    friend bool operator==(HexRange, HexRange) = default;
};

/// Asks whether a text is a code point in a range: unicode IN HEXRANGE(0041, 005A).
struct HexRangeTest {
    QString key;
    HexRange range;
};

/// Matches a regular expression against the whole text: name MATCHES "a.*".
struct PatternTest {
    QString key;
    PredicatePattern pattern;
};

struct PredicateNode;

/// Joins tests: AND is All, OR is Any, NOT is None of one. All of nothing is always true (TRUEPREDICATE), Any
/// of nothing never (FALSEPREDICATE).
struct PredicateGroup {
    enum class Kind : quint8 { All, Any, None };

    Kind kind = Kind::All;
    std::vector<PredicateNode> members;
};

struct PredicateNode {
    std::variant<PredicateGroup, TextTest, NumberTest, ListTest, HexRangeTest, PatternTest> test;
};

} // namespace runebook

Q_DECLARE_METATYPE(runebook::HexRange)
