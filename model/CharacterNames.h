#pragma once

#include <QString>
#include <functional>

namespace runebook {

/// The name of the record that has a code point; null for none.
using NameOfCharacter = std::function<QString(char32_t)>;

/// What a record of the character should be called: the name of the glyph list, else one that follows from the
/// character's own name in the habits of the program's sample: "ghestroke-cy", "onesuperior", "kaMatra-deva". Letters
/// with marks are called after the record of their base, where there is one. Always a valid name; "uni4E00" where
/// nothing shorter can be told. Null for what Unicode does not assign.
QString proposedName(char32_t codePoint, const NameOfCharacter &nameOf = {});
/// Whether a letter with a cedilla is drawn with a comma below, or above the g.
bool hasCommaForCedilla(char32_t codePoint);

} // namespace runebook
