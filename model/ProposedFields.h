#pragma once

#include "model/CharacterNames.h"

#include <QStringList>

namespace runebook {

/// What a record of a character should hold, by what Unicode says and in the words of this program.
struct ProposedFields {
    QString name;
    QString description; ///< the character's name
    QString category, subCategory;
    QString script; ///< null for what belongs to none, or to one that the vocabulary has not
    QString production; ///< null where the name itself serves
    QStringList decomposition; ///< names of records; empty when not all of them are there
    int letterCase = 0; ///< VXGlyphInfo::Case
    int direction = -2; ///< VXGlyphInfo::Direction; not set where it goes without saying
};

/// The fields for \a codePoint, in a document whose records \a nameOf knows; everything is empty for what Unicode
/// does not assign. Some ten microseconds.
ProposedFields proposedFields(char32_t codePoint, const NameOfCharacter &nameOf = {});

// The parts of it, for who needs one.
QString proposedDescription(char32_t codePoint);
QString proposedScript(char32_t codePoint);
int proposedCase(char32_t codePoint);
int proposedDirection(char32_t codePoint);
/// The characters that the glyph of a character is made of, as it is drawn: a dotless letter under a mark, the comma
/// below that some letters have for a cedilla. Empty for what is drawn as a whole.
std::vector<char32_t> proposedComponents(char32_t codePoint);

} // namespace runebook
