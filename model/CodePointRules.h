#pragma once

#include <QtGlobal>
#include <optional>
#include <string_view>

namespace runebook {

/// What keeps a text from being a code point as glyph data files have it.
enum class CodePointObjection : quint8 {
    None,
    NoNumber, ///< empty, or with a character that is no hexadecimal digit
    TooLarge, ///< beyond 10FFFF
    Surrogate, ///< D800 to DFFF: half a character
    Form, ///< fewer than four digits, lower case, or zeros in front of more than four
};

/// The first objection to \a utf8, in the order above.
CodePointObjection objectionToCodePoint(std::string_view utf8);
/// The number that \a utf8 stands for, be it in the usual form or not; nothing for what is no code point at
/// all. Surrogates count as numbers.
std::optional<char32_t> codePointOfText(std::string_view utf8);

} // namespace runebook
