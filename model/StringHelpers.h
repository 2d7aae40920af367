#pragma once

#include <QString>

namespace runebook {

/// A range of UTF-16 units.
struct UnitRange {
    qsizetype location = 0;
    qsizetype length = 0;
    friend bool operator==(const UnitRange &, const UnitRange &) = default;
};

/// The value of a text of hexadecimal digits, kept in 32 bits; 0 when any other character occurs ("0x", a
/// blank, a minus sign) and for the empty text.
quint32 hexStringToInt(QStringView text);
/// The value of a hexadecimal digit; -1 for other characters.
int hexDigit(QChar character);
bool isHexDigit(QChar character);
/// At least four upper-case digits. The magnitude is capped at 0xFFFFFFF, seven digits; a negative number
/// gets a "-" in front.
QString hexStringFromInt(qint64 number);
/// The text of one code point: "" for 0, one unit below 0x10000 (surrogates included), otherwise a pair; null
/// above 0x10FFFF.
QString stringWithChar(char32_t codePoint);
/// The code point at \a index, which moves to the second unit where a pair starts there.
char32_t character32AtIndex(QStringView text, qsizetype &index);
/// The range of the line with the 1-based \a number. Every line end counts as one unit, CR LF too; beyond
/// the last line the range is empty.
UnitRange rangeOfLine(QStringView text, int number);
/// A new random UUID, upper case, 8-4-4-4-12 digits.
QString UUID();

/// White space as the readers trim it: the Unicode separators, tab, and every line end.
bool isWhitespaceOrNewline(char32_t character);
/// The characters that end a line of a table: LF, VT, FF, CR, NEL, line and paragraph separator.
bool isLineEnd(char32_t character);

} // namespace runebook
