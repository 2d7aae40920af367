#include "codeeditor/PythonScanner.h"

#include "codeeditor/CharacterClasses.h"

#include <algorithm>

namespace runebook::python {

namespace {

bool isDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}
bool isHexDigit(char16_t c)
{
    return isDigit(c) || ((c | 0x20) >= u'a' && (c | 0x20) <= u'f');
}
bool isOctalDigit(char16_t c)
{
    return c >= u'0' && c <= u'7';
}
bool isBinaryDigit(char16_t c)
{
    return c == u'0' || c == u'1';
}

/// Digits with single underscores between them; \a start itself when no digit stands there.
template <typename IsDigit> qsizetype endOfDigits(QStringView text, qsizetype start, IsDigit isOne)
{
    const char16_t *units = text.utf16();
    qsizetype index = start;
    while (index < text.size()) {
        if (isOne(units[index]))
            ++index;
        else if (units[index] == u'_' && index > start && index + 1 < text.size() && isOne(units[index + 1]))
            index += 2;
        else
            break;
    }
    return index;
}

/// The end of 0x.., 0o.., 0b..; \a start when it is none of them. An underscore may follow the letter.
qsizetype endOfPrefixedNumber(QStringView text, qsizetype start)
{
    const char16_t *units = text.utf16();
    if (start + 2 >= text.size() || units[start] != u'0')
        return start;
    const qsizetype digits = start + (units[start + 2] == u'_' ? 3 : 2);
    qsizetype end = digits;
    switch (units[start + 1] | 0x20) {
    case u'x':
        end = endOfDigits(text, digits, isHexDigit);
        break;
    case u'o':
        end = endOfDigits(text, digits, isOctalDigit);
        break;
    case u'b':
        end = endOfDigits(text, digits, isBinaryDigit);
        break;
    default:
        break;
    }
    return end > digits ? end : start;
}

qsizetype endOfExponent(QStringView text, qsizetype start)
{
    const char16_t *units = text.utf16();
    if (start >= text.size() || (units[start] | 0x20) != u'e')
        return start;
    qsizetype digits = start + 1;
    if (digits < text.size() && (units[digits] == u'+' || units[digits] == u'-'))
        ++digits;
    const qsizetype end = endOfDigits(text, digits, isDigit);
    return end > digits ? end : start;
}

} // namespace

qsizetype endOfLine(QStringView text, qsizetype start)
{
    const char16_t *const begin = text.utf16();
    return std::find_if(begin + start, begin + text.size(), isLineEnd) - begin;
}

qsizetype endOfName(QStringView text, qsizetype start)
{
    qsizetype index = start + characterLength(text, start);
    while (index < text.size()) {
        const int length = namePartLength(text, index);
        if (length == 0)
            break;
        index += length;
    }
    return index;
}

qsizetype endOfNumber(QStringView text, qsizetype start)
{
    if (const qsizetype end = endOfPrefixedNumber(text, start); end > start)
        return end;
    const char16_t *units = text.utf16();
    const qsizetype whole = endOfDigits(text, start, isDigit);
    qsizetype end = whole;
    if (end < text.size() && units[end] == u'.') {
        end = endOfDigits(text, end + 1, isDigit);
        if (whole == start && end == start + 1)
            return start; // a dot alone
    }
    if (end == start)
        return start;
    end = endOfExponent(text, end);
    if (end < text.size() && (units[end] | 0x20) == u'j')
        ++end;
    return end;
}

qsizetype endOfString(QStringView text, qsizetype start)
{
    const char16_t *units = text.utf16();
    const char16_t quote = units[start];
    if (start + 2 < text.size() && units[start + 1] == quote && units[start + 2] == quote)
        return endOfBlock(text, start, 3, text.sliced(start, 3), Escapes::Yes);
    qsizetype index = start + 1;
    while (index < text.size() && !isLineEnd(units[index])) {
        if (units[index] == quote)
            return index + 1;
        if (units[index] == u'\\' && index + 1 < text.size()) {
            const bool pair =
                units[index + 1] == u'\r' && index + 2 < text.size() && units[index + 2] == u'\n';
            index += pair ? 2 : 1;
        }
        ++index;
    }
    return index;
}

bool isInStringOrComment(QStringView line, qsizetype index)
{
    const QString front =
        line.left(index).toString() + u' '; // which a string that has no end yet takes along
    qsizetype at = 0;
    while (at < index) {
        if (front[at] == u'#')
            return true;
        at = front[at] == u'"' || front[at] == u'\'' ? endOfString(front, at) : at + 1;
    }
    return at > index;
}

qsizetype endOfBlock(QStringView text, qsizetype start, qsizetype skip, QStringView terminator,
                     Escapes escapes)
{
    qsizetype index = start + skip;
    if (escapes == Escapes::No) {
        const qsizetype found = text.indexOf(terminator, index);
        return found < 0 ? text.size() : found + terminator.size();
    }
    const char16_t *units = text.utf16();
    const char16_t first = terminator.utf16()[0];
    for (; index < text.size(); ++index) {
        if (units[index] == u'\\')
            ++index;
        else if (units[index] == first && text.sliced(index).startsWith(terminator))
            return index + terminator.size();
    }
    return text.size();
}

} // namespace runebook::python
