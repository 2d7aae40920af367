#pragma once

#include <QStringView>

/// Where the pieces of a Python source end. Each function takes the index at which a piece begins and
/// answers the first index behind it; numbers answer the start itself when no number stands there.
namespace runebook::python {

/// The end of the line at \a start, its break not included.
qsizetype endOfLine(QStringView text, qsizetype start);

/// Names: letters of all scripts, digits, marks and underscores, behind a first character of any kind.
qsizetype endOfName(QStringView text, qsizetype start);

/// Numbers as Python writes them: 0x 0o 0b, underscores between digits, fractions, exponents, j.
qsizetype endOfNumber(QStringView text, qsizetype start);

/// Strings: the quote at \a start to the same quote, or three of them to three. A backslash takes the next
/// character along, a line break too. An unfinished one ends before its line's break, a threefold one with
/// the text.
qsizetype endOfString(QStringView text, qsizetype start);

/// Whether what is written at \a index of \a line, which no string from a line before reaches into, becomes
/// part of a string or a comment.
bool isInStringOrComment(QStringView line, qsizetype index);

/// Whether a backslash takes the next character along.
enum class Escapes { No, Yes };

/// A block from \a start (its first \a skip units are the opening) through \a terminator or to the end.
qsizetype endOfBlock(QStringView text, qsizetype start, qsizetype skip, QStringView terminator,
                     Escapes escapes);

} // namespace runebook::python
