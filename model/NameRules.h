#pragma once

#include <QString>
#include <string_view>

namespace runebook {

/// What keeps a text from being a glyph name, whatever other names there are.
enum class NameObjection : quint8 {
    None,
    Empty,
    Space, ///< white space other than line ends
    Character, ///< one that is no letter a-z, digit, full stop, hyphen or underscore
    Digit, ///< it begins with one
};

/// The first objection to \a name, in the order above.
NameObjection objectionToName(QStringView name);
/// The same for UTF-8; quick for names that are plain ASCII.
NameObjection objectionToName(std::string_view utf8);
/// The sentence that tells a person; null for None.
QString textOfObjection(NameObjection objection);
/// What is said about a name that another record has.
QString textOfTakenName(const QString &name);
/// The production name that a record called \a name gets from its first code point; null when it gets none.
QString productionNameFor(const QString &name, const QString &codePoint);

} // namespace runebook
