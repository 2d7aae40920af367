#include "codeeditor/CharacterClasses.h"

#include <QChar>

namespace runebook {

namespace {

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

bool isBlankOutsideLatin1(char16_t c)
{
    return c == 0x1680 || (c >= 0x2000 && c <= 0x200B) || c == 0x2028 || c == 0x2029 || c == 0x202F
        || c == 0x205F || c == 0x3000;
}

int characterLength(QStringView text, qsizetype index)
{
    return codePointAt(text, index) > 0xFFFF ? 2 : 1;
}

int nameStartLengthOutsideLatin1(QStringView text, qsizetype index)
{
    const char32_t c = codePointAt(text, index);
    if (!QChar::isLetter(c) && QChar::category(c) != QChar::Number_Letter)
        return 0;
    return c > 0xFFFF ? 2 : 1;
}

int namePartLengthOutsideLatin1(QStringView text, qsizetype index)
{
    const char32_t c = codePointAt(text, index);
    if (!continuesName(c))
        return 0;
    return c > 0xFFFF ? 2 : 1;
}

} // namespace runebook
