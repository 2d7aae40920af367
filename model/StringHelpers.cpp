#include "model/StringHelpers.h"

#include <QUuid>

namespace runebook {

using namespace Qt::StringLiterals;

int hexDigit(QChar character)
{
    if (character >= u'0' && character <= u'9')
        return character.unicode() - u'0';
    if (character >= u'A' && character <= u'F')
        return character.unicode() - u'A' + 10;
    if (character >= u'a' && character <= u'f')
        return character.unicode() - u'a' + 10;
    return -1;
}

bool isHexDigit(QChar character)
{
    return hexDigit(character) >= 0;
}

quint32 hexStringToInt(QStringView text)
{
    quint32 value = 0;
    for (const QChar character : text) {
        const int digit = hexDigit(character);
        if (digit < 0)
            return 0;
        value = value << 4 | static_cast<quint32>(digit);
    }
    return value;
}

QString hexStringFromInt(qint64 number)
{
    const quint64 magnitude = number < 0 ? 0 - static_cast<quint64>(number) : static_cast<quint64>(number);
    const quint64 capped = qMin<quint64>(magnitude, 0xFFFFFFF);
    const QString digits = QString::number(capped, 16).toUpper().rightJustified(4, u'0');
    return number < 0 ? u'-' + digits : digits;
}

QString stringWithChar(char32_t codePoint)
{
    if (codePoint == 0)
        return u""_s;
    if (codePoint < 0x10000)
        return QString(QChar(static_cast<char16_t>(codePoint)));
    if (codePoint > QChar::LastValidCodePoint)
        return {};
    return QString::fromUcs4(&codePoint, 1);
}

char32_t character32AtIndex(QStringView text, qsizetype &index)
{
    const QChar first = text.at(index);
    if (!first.isHighSurrogate() || index + 1 >= text.size() || !text.at(index + 1).isLowSurrogate())
        return first.unicode();
    ++index;
    return QChar::surrogateToUcs4(first, text.at(index));
}

UnitRange rangeOfLine(QStringView text, int number)
{
    UnitRange range;
    qsizetype lineStart = 0;
    for (int line = 1; lineStart < text.size(); ++line) {
        qsizetype lineEnd = lineStart;
        while (lineEnd < text.size() && !isLineEnd(text.at(lineEnd).unicode()))
            ++lineEnd;
        if (line == number) {
            range.length = lineEnd - lineStart;
            return range;
        }
        range.location += lineEnd - lineStart + 1;
        const bool pair =
            lineEnd + 1 < text.size() && text.at(lineEnd) == u'\r' && text.at(lineEnd + 1) == u'\n';
        lineStart = lineEnd + (pair ? 2 : 1);
    }
    return range;
}

QString UUID()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

bool isWhitespaceOrNewline(char32_t character)
{
    if (character < 0x80)
        return character == ' ' || (character >= 0x09 && character <= 0x0D);
    if (character == 0x85)
        return true;
    const QChar::Category category = QChar::category(character);
    return category == QChar::Separator_Space || category == QChar::Separator_Line
        || category == QChar::Separator_Paragraph;
}

bool isLineEnd(char32_t character)
{
    return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == 0x2028
        || character == 0x2029;
}

} // namespace runebook
