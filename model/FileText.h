#pragma once

#include <QString>

namespace runebook {

/// Why a text would not come back from a glyph data file, whose format has no way to write it.
enum class FileTextObjection : quint8 {
    None,
    Comment, ///< begins or ends a comment: would take other records with it, so no file gets it
    QuoteOrBreak, ///< a double quote or a line break ends the value
    HalfCharacter, ///< a surrogate without its other half is no character
    LeadingBlank ///< blanks in front of a value are passed over
};

/// The first objection, in the order of the list, to \a text as a value of a file.
FileTextObjection objectionToFileText(QStringView text);
/// Whether the value may not be written at all, since other records would go with it.
inline bool takesOthers(FileTextObjection objection)
{
    return objection == FileTextObjection::Comment;
}
/// The objection to \a text in a sentence that names the field as \a fieldTitle; null without one.
QString sentenceOfObjection(QStringView text, const QString &fieldTitle);
/// What to write instead, as words for a button: "Write <! -- instead". Null where nothing is to be offered.
QString offerFor(QStringView text);
/// The nearest text that a file holds: marks of comments opened up, quotes and halves of characters left out,
/// line breaks made blanks, blanks in front taken away. \a text itself when there is nothing to object to.
QString fileText(const QString &text);

} // namespace runebook
