#include "CharacterClasses.h"

#include <QChar>
#include <array>

namespace runebook {

namespace {

enum : quint8 { NameStart = 1, NamePart = 2, Blank = 4 };

constexpr quint8 classOfLatin1(int c)
{
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == 0xAA || c == 0xB5
        || c == 0xBA || (c >= 0xC0 && c != 0xD7 && c != 0xF7);
    const bool digit = c >= '0' && c <= '9';
    const bool blank = (c >= 0x09 && c <= 0x0D) || (c >= 0x1C && c <= 0x20) || c == 0x85 || c == 0xA0;
    return quint8((letter ? NameStart : 0) | (letter || digit ? NamePart : 0) | (blank ? Blank : 0));
}

constexpr auto latin1Classes = [] {
    std::array<quint8, 256> classes {};
    for (int c = 0; c < 256; ++c)
        classes[std::size_t(c)] = classOfLatin1(c);
    return classes;
}();

/// The code point at \a index; a lone surrogate stands for itself, and no class contains it.
char32_t codePointAt(QStringView text, qsizetype index)
{
    const QChar c = text[index];
    if (c.isHighSurrogate() && index + 1 < text.size() && text[index + 1].isLowSurrogate())
        return QChar::surrogateToUcs4(c, text[index + 1]);
    return c.unicode();
}

bool continuesName(char32_t c)
{
    switch (QChar::category(c)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Punctuation_Connector:
        return true;
    default:
        return QChar::isLetter(c);
    }
}

} // namespace

bool isBlank(char16_t c)
{
    if (c < 256)
        return (latin1Classes[c] & Blank) != 0;
    return c == 0x1680 || (c >= 0x2000 && c <= 0x200B) || c == 0x2028 || c == 0x2029 || c == 0x202F
        || c == 0x205F || c == 0x3000;
}

int characterLength(QStringView text, qsizetype index)
{
    return codePointAt(text, index) > 0xFFFF ? 2 : 1;
}

int nameStartLength(QStringView text, qsizetype index)
{
    const char16_t unit = text.utf16()[index];
    if (unit < 256)
        return latin1Classes[unit] & NameStart ? 1 : 0;
    const char32_t c = codePointAt(text, index);
    if (!QChar::isLetter(c) && QChar::category(c) != QChar::Number_Letter)
        return 0;
    return c > 0xFFFF ? 2 : 1;
}

int namePartLength(QStringView text, qsizetype index)
{
    const char16_t unit = text.utf16()[index];
    if (unit < 256)
        return latin1Classes[unit] & NamePart ? 1 : 0;
    const char32_t c = codePointAt(text, index);
    if (!continuesName(c))
        return 0;
    return c > 0xFFFF ? 2 : 1;
}

} // namespace runebook
