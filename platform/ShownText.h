#pragma once

#include <QString>

namespace runebook {

// How much of a text is shown at once, in UTF-16 units. Values may be of any length; laying out a hundred
// thousand characters takes seconds, and nobody reads them in a line.

inline constexpr qsizetype kMostInCell = 512; ///< of a cell of a table
inline constexpr qsizetype kMostInField = 2048; ///< of a field; a longer value is edited elsewhere
inline constexpr qsizetype kMostOfLong = 1024; ///< of such a longer value in its field
inline constexpr qsizetype kMostInMessage = 2000; ///< of a message, a tip, a bubble
inline constexpr qsizetype kMostInPreview = 200; ///< of the letters of a preview

/// \a text as it is shown where there is room for \a most: the beginning and an ellipsis of a longer one.
QString shownText(const QString &text, qsizetype most);
/// The beginning of \a text, \a most units or one less: no character is cut in half.
QStringView beginningOf(QStringView text, qsizetype most);

} // namespace runebook
