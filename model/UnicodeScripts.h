#pragma once

#include <QString>

namespace runebook {

/// The word for a script of Unicode ("Old_Italic") in the vocabulary of records; null for one that it has not.
QString scriptWord(const QString &unicodeScript);
/// Whether a script of Unicode is none: "Common" and "Inherited".
bool hasNoScript(const QString &unicodeScript);
/// What the names of a script end in, behind a hyphen; empty for those that need nothing.
QString nameSuffix(const QString &unicodeScript);
bool isRightToLeft(const QString &unicodeScript);
/// The script of Unicode that a block is called after, "Arabic" for "Arabic Presentation Forms-A"; null for none.
QString scriptOfBlock(const QString &block);

} // namespace runebook
