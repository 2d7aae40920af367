#pragma once

#include <QString>

namespace runebook {

/// What holds for the text of every predicate: its bounds, and the errors of those that are refused.
class PredicateText
{
public:
    enum ErrorCode { SyntaxError = 1, TooLong, TooDeep, WrongArguments, InvalidPattern, PatternGaveUp };
    /// The domain of errors with these codes.
    static QString errorDomain();
    /// The longest text that is parsed, in UTF-16 units, and the deepest nesting of "(" and "!".
    static constexpr qsizetype kMaxLength = 1 << 20;
    static constexpr int kMaxDepth = 200;
};

} // namespace runebook
