#pragma once

#include <QStringView>

namespace runebook {

/// What a Python source is made of, character by character. Latin-1 is answered from a table: nearly all
/// of a source lies there, and the tokenizer asks for each character.

/// True for the characters that end a line of source: line feed, carriage return and the paragraph
/// separator by which a text document parts its blocks. The line separator U+2028 is none: Python goes on.
constexpr bool isLineEnd(char16_t c)
{
    return c == u'\n' || c == u'\r' || c == u'\u2029';
}

/// True for blanks of every kind, line ends included.
bool isBlank(char16_t c);

/// The number of UTF-16 units (1 or 2; 0 for no) of the name character at \a index of \a text: a letter of
/// any script or the underscore; inside a name also digits and combining marks.
int nameStartLength(QStringView text, qsizetype index);
int namePartLength(QStringView text, qsizetype index);

/// 1, or 2 when a whole surrogate pair stands at \a index.
int characterLength(QStringView text, qsizetype index);

} // namespace runebook
