#pragma once

#include <QByteArray>
#include <QIODevice>
#include <optional>

namespace runebook {

/// What is left of two glyph data files without the glyph lines that both have.
struct OtherLines {
    QByteArray left; ///< a text that reads as the records of the other lines of the left file
    QByteArray right;
    qsizetype common = 0; ///< glyph lines taken out of each
};

/// Reads two glyph data files block by block and takes the glyph lines that stand in both, byte for byte, out
/// of either: as often as both have them and wherever they stand. Memory is needed for the other lines only.
/// Nothing where lines cannot be told apart that way: a comment among the glyphs, no glyph at all, not UTF-8,
/// a device that fails. Then the files have to be read as a whole, which also tells what is wrong.
std::optional<OtherLines> linesNotInCommon(QIODevice &left, QIODevice &right);

} // namespace runebook
