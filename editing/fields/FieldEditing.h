#pragma once

#include "document/VXDocument.h"

#include <span>

namespace runebook {

/// Why \a text cannot stand in a field of \a infos, in words; an empty domain when it can. The one answer for
/// the mark of a field, for whatever refuses a text, and for the list of problems.
Error objectionToText(const VXDocument &document, const InfoList &infos, GlyphField field,
                      const QString &text);

/// The same as far as it does not depend on other records. Any thread.
Error objectionToText(GlyphField field, const QString &text);

/// The same for a field that is one text other than a name, of a text of any length. Any thread.
Error objectionToLongText(GlyphField field, QStringView text);

/// Sets one field of records from what the user typed, as one named undo step: the same rules for a table
/// cell, the detail pane and many selected records. Records that have the value already are left alone.
/// False and an error, with nothing changed, when the text is refused.
bool setFieldFromText(VXDocument &document, const InfoList &infos, GlyphField field, const QString &text,
                      Error *error = nullptr);

/// The same for such a text, to which nothing objects, made on another thread: nothing is copied.
void setFieldToValue(VXDocument &document, const InfoList &infos, GlyphField field, const FieldValue &value);

/// The words that a field is usually filled with, to be offered; empty for fields without a vocabulary.
QStringList vocabularyOf(GlyphField field);

/// What the user sees of one field of several records.
struct CommonValue {
    QString text; ///< the common text, the beginning of a long one; empty when they differ
    qsizetype length = 0; ///< of the whole of it
    bool isMixed = false;
};
CommonValue commonValue(std::span<const InfoPtr> infos, GlyphField field);
/// Whether the user sees the same in both records.
bool lookAlike(const VXGlyphInfo &a, const VXGlyphInfo &b, GlyphField field);

/// The first of \a names that some record has as its name; null when there is none. No record is called by
/// an empty name.
QString repeatingName(const VXDocument &document, const QStringList &names);

} // namespace runebook
