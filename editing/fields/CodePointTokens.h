#pragma once

#include <QStringList>

namespace runebook {

/// The tokens of a code point field as they are added: those of one to three characters get zeros in front,
/// all turn to upper case, and those that are no hexadecimal number are left out. An empty one stays.
QStringList normalizedCodePointTokens(const QStringList &tokens);

/// The pieces of a typed or pasted text, split at commas, semicolons and white space; none is empty. "U+" and
/// "0x" in front of a piece go, as copied code points often have them.
QStringList codePointTokensInText(const QString &text);

/// What a field for code points makes of a text.
struct CodePointText {
    QStringList kept; ///< in their final form
    QStringList leftOut; ///< as they were typed: what is no code point
    /// A word on what the user would not expect: what was left out, and what no file will keep; null for
    /// none.
    QString remark() const;
};
CodePointText codePointsOfText(const QString &text);

/// A file keeps so many code points of a record.
inline constexpr qsizetype kCodePointsInFile = 2;

} // namespace runebook
