#pragma once

#include "document/VXDocument.h"
#include "model/EditedValue.h"

namespace runebook {

// What the commands of the document window do to records, apart from any window.

/// The lines of the records as they go to the clipboard; empty when there is nothing to copy.
QString clipboardText(const InfoList &infos);
/// The records of all glyph lines of a clipboard text (UTF-8); the other lines are passed over, and records that no save
/// would write are left out.
InfoList infosOfClipboard(const QByteArray &utf8, LeftOut &leftOut);
/// Puts each record's name behind its alternate names, once; the name itself stays. One undo step. Tells of the records
/// that it leaves as they are.
LeftOut moveNamesToAltNames(VXDocument &document, const InfoList &infos);
/// The record that somebody means by a name, a code point ("41", "U+0041") or the character itself, or null.
InfoPtr infoForNameOrCodePoint(const VXDocument &document, const QString &text);
/// Those of \a candidates whose \a field has the same value as in one of \a examples.
InfoList infosWithSameValue(const InfoList &candidates, const InfoList &examples, GlyphField field);

} // namespace runebook
