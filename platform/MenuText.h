#pragma once

#include <QString>

namespace runebook {

/// A text from a file or a record as a menu may show it: not too long, and without mnemonics.
inline QString menuText(const QString &text)
{
    using namespace Qt::StringLiterals;
    constexpr qsizetype kLongest = 80;
    return text.left(kLongest).simplified().replace(u'&', "&&"_L1);
}

} // namespace runebook
