#pragma once

#include "document/VXDocument.h"
#include "model/EditedValue.h"

#include <memory>

class QMimeData;

namespace runebook {

// What the commands of the document window do to records, apart from any window.

/// The records as they go to the clipboard: their lines as text, and beside it, for the program itself, the
/// form that holds every value. Null when there is nothing to copy.
std::unique_ptr<QMimeData> clipboardData(const InfoList &infos);
/// The records of a clipboard: by the program's own form where it is whole, otherwise those of all glyph
/// lines of its text, whose other lines are passed over. Records that no save would write are left out.
InfoList infosOfClipboard(const QMimeData &clipboard, LeftOut &leftOut);
/// Puts each record's name behind its alternate names, once; the name itself stays. One undo step. Tells of
/// the records that it leaves as they are.
LeftOut moveNamesToAltNames(VXDocument &document, const InfoList &infos);
/// The record that somebody means by a name, a code point ("41", "U+0041") or the character itself, or null.
InfoPtr infoForNameOrCodePoint(const VXDocument &document, const QString &text);
/// Those of \a candidates whose \a field has the same value as in one of \a examples.
InfoList infosWithSameValue(const InfoList &candidates, const InfoList &examples, GlyphField field);

} // namespace runebook
