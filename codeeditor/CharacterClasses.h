#pragma once

#include <QStringView>
#include <array>

namespace runebook {

/// What a Python source is made of, character by character. Latin-1 is answered from a table, in place:
/// nearly all of a source lies there, and the tokenizer asks for each character.
namespace latin1 {

enum : quint8 { NameStart = 1, NamePart = 2, Blank = 4 };

constexpr quint8 classOf(int c)
{
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == 0xAA || c == 0xB5
        || c == 0xBA || (c >= 0xC0 && c != 0xD7 && c != 0xF7);
    const bool digit = c >= '0' && c <= '9';
    const bool blank = (c >= 0x09 && c <= 0x0D) || (c >= 0x1C && c <= 0x20) || c == 0x85 || c == 0xA0;
    return quint8((letter ? NameStart : 0) | (letter || digit ? NamePart : 0) | (blank ? Blank : 0));
}

inline constexpr auto kClasses = [] {
    std::array<quint8, 256> table {};
    for (int c = 0; c < 256; ++c)
        table[std::size_t(c)] = classOf(c);
    return table;
}();

} // namespace latin1

/// True for the characters that end a line of source: line feed, carriage return and the paragraph
/// separator by which a text document parts its blocks. The line separator U+2028 is none: Python goes on.
constexpr bool isLineEnd(char16_t c)
{
    return c == u'\n' || c == u'\r' || c == u'\u2029';
}

bool isBlankOutsideLatin1(char16_t c);
int nameStartLengthOutsideLatin1(QStringView text, qsizetype index);
int namePartLengthOutsideLatin1(QStringView text, qsizetype index);

/// True for blanks of every kind, line ends included.
inline bool isBlank(char16_t c)
{
    return c < 256 ? (latin1::kClasses[c] & latin1::Blank) != 0 : isBlankOutsideLatin1(c);
}

/// The number of UTF-16 units (1 or 2; 0 for no) of the name character at \a index of \a text: a letter of
/// any script or the underscore.
inline int nameStartLength(QStringView text, qsizetype index)
{
    const char16_t c = text.utf16()[index];
    return c < 256 ? latin1::kClasses[c] & latin1::NameStart : nameStartLengthOutsideLatin1(text, index);
}

/// The same for a character inside a name, where digits and combining marks may stand too.
inline int namePartLength(QStringView text, qsizetype index)
{
    const char16_t c = text.utf16()[index];
    return c < 256 ? (latin1::kClasses[c] & latin1::NamePart) >> 1 : namePartLengthOutsideLatin1(text, index);
}

/// 1, or 2 when a whole surrogate pair stands at \a index.
int characterLength(QStringView text, qsizetype index);

} // namespace runebook
