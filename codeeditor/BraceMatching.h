#pragma once

#include "codeeditor/TextRange.h"

#include <QStringView>
#include <functional>
#include <optional>

/// Braces and their partners. The two lists are made once per process, from the user defaults
/// "TEOpeningBracesCharacters" and "TEClosingBracesCharacters" when both are set and equally long, else
/// { [ ( « and } ] ) ». Later changes of the defaults have no effect. Main thread only.

/// Makes the lists, once.
void initBraces();

/// True when \a character is in the opening (closing) list. Before the lists exist, the first call of all
/// answers false for every character and makes them: the length is read first, deliberately.
bool TE_isOpeningBrace(char16_t character);
bool TE_isClosingBrace(char16_t character);

/// The brace of \a string that matches the one at \a index, as a range of length 1. Nothing when there is no
/// brace, no partner, a crossed pair, or more than 100 open braces on the way (which is logged). Quotes and
/// comments are not special.
std::optional<runebook::TextRange> TE_findMatchingBraceForRangeInString(int index, QStringView string);

namespace runebook {

/// The same in the piece \a searched of a text that is read bit by bit: \a read answers the units of a range.
std::optional<TextRange> findMatchingBrace(int index, TextRange searched,
                                           const std::function<QString(TextRange)> &read);

/// Two strings of equal length: the character at an index of one pairs with that of the other.
struct BraceLists {
    QString opening;
    QString closing;

    /// What the lists are for the values of the two defaults (null when unset); inconsistent values are
    /// logged and replaced by the built-in lists.
    static BraceLists fromDefaults(const QString &opening, const QString &closing);
};

} // namespace runebook
