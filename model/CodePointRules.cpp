#include "model/CodePointRules.h"

namespace runebook {

namespace {

constexpr quint64 kLast = 0x10FFFF;

/// The value, no larger than just beyond the last code point; nothing when it is no number.
std::optional<quint64> valueOf(std::string_view text)
{
    if (text.empty())
        return {};
    quint64 value = 0;
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        const bool isLetter = (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
        if (!isDigit && !isLetter)
            return {};
        const int digit = isDigit ? c - '0' : (c | 0x20) - 'a' + 10;
        value = qMin(value << 4 | static_cast<quint64>(digit), kLast + 1);
    }
    return value;
}

bool isUsualForm(std::string_view text)
{
    if (text.size() < 4 || (text.size() > 4 && text.front() == '0'))
        return false;
    return text.find_first_of("abcdef") == text.npos;
}

} // namespace

CodePointObjection objectionToCodePoint(std::string_view utf8)
{
    const std::optional<quint64> value = valueOf(utf8);
    if (!value)
        return CodePointObjection::NoNumber;
    if (*value > kLast)
        return CodePointObjection::TooLarge;
    if (*value >= 0xD800 && *value <= 0xDFFF)
        return CodePointObjection::Surrogate;
    return isUsualForm(utf8) ? CodePointObjection::None : CodePointObjection::Form;
}

std::optional<char32_t> codePointOfText(std::string_view utf8)
{
    const std::optional<quint64> value = valueOf(utf8);
    if (!value || *value > kLast)
        return {};
    return static_cast<char32_t>(*value);
}

} // namespace runebook
