#pragma once

#include "model/VXGlyphInfo.h"

#include <QCoreApplication>

namespace runebook {

/// Stores what a person or a correction has made of a field that is a text or a list, with its undo step: one
/// text, or the parts of a list. A field that is emptied becomes absent.
void storeEdited(VXGlyphInfo &info, GlyphField field, const QStringList &value);
/// The same for a field that is one text.
void storeEdited(VXGlyphInfo &info, GlyphField field, const QString &text);

/// Stores a text as it is, by the field's own rules and with an undo step where the field's setter has none;
/// a null text makes the field absent. Not by key: commands over many records come here for each.
void storeText(VXGlyphInfo &info, GlyphField field, const QString &text);

/// Why no save would write \a value in \a field, in the sentence that the field itself says; null when it may
/// be written.
QString refusalOfEdited(GlyphField field, const QStringList &value);
/// Why no save would write the record \a info, which a command is about to add; null when it may be written.
QString refusalOfEdited(const VXGlyphInfo &info);

/// The records that a command over many has left as they were, since no save would write what it makes of
/// them.
struct LeftOut {
    qsizetype records = 0;
    QString sentence; ///< about the first of them

    void add(const QString &why)
    {
        if (records++ == 0)
            sentence = why;
    }
    /// How many, and why; null for none.
    QString text() const;
    friend bool operator==(const LeftOut &, const LeftOut &) = default;
};

} // namespace runebook
