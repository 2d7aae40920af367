#pragma once

#include <QStringView>
#include <vector>

namespace runebook {

/// A part of a text, in UTF-16 units.
struct TextPart {
    qsizetype begin = 0;
    qsizetype length = 0;
    friend bool operator==(const TextPart &, const TextPart &) = default;
};

/// The parts of two texts that the other does not have, ascending, not adjoining.
struct TextDifference {
    std::vector<TextPart> left;
    std::vector<TextPart> right;
};

/// Compares word by word, one changed word for another character by character; characters are never cut in
/// two. Of very long texts with changes far apart, everything from the first to the last change is one part.
TextDifference differenceOfTexts(QStringView left, QStringView right);

} // namespace runebook
