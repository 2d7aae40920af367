#pragma once

#include "codeeditor/TextRange.h"

#include <QTextLayout>
#include <QVariantMap>

class QTextBlock;
class QTextDocument;

namespace runebook {

/// The colours and fonts that lie over a document's text without being part of it: they take no part in undo,
/// do not count as a modification, and go when their block goes.
using FormatRanges = QList<QTextLayout::FormatRange>;

/// The format property that holds the colour an attribute was given, where what is painted had to differ from
/// it to be readable.
constexpr int kGivenColorProperty = 0x100000 + 0x52;

/// The formats over \a block, in its own positions, without those of a text being composed.
FormatRanges overlayOf(const QTextBlock &block);

/// Lays \a formats over \a block. Returns false, and touches nothing, when they lie there already. Outside of
/// a document's own change notification the caller announces the change (QTextDocument::markContentsDirty).
bool setOverlay(const QTextBlock &block, const FormatRanges &formats);

/// \a formats with [\a start, \a start + \a length) given to \a format alone.
FormatRanges withFormat(const FormatRanges &formats, int start, int length, const QTextCharFormat &format);

/// An attribute dictionary ("NSColor", "NSFont") as a format, and what is set in a format as such a
/// dictionary
/// ("NSLink" for links besides).
QTextCharFormat formatFromAttributes(const QVariantMap &attributes);
QVariantMap attributesFromFormat(const QTextCharFormat &format);

/// The attributes of the character at \a index of any document: those of the text with those that lie over
/// it. \a effectiveRange gets the largest piece of its paragraph around it with the same ones. Empty, with an
/// empty range, outside the text.
QVariantMap attributesAt(const QTextDocument &document, int index, TextRange *effectiveRange = nullptr);

/// The pieces of \a range in \a document, in order and paragraph by paragraph, each with what attributesAt()
/// answers for it; a paragraph's end stands at the end of its last piece. Linear in the number of pieces.
struct AttributeRun {
    TextRange range;
    QVariantMap attributes;
};
QList<AttributeRun> attributeRuns(const QTextDocument &document, TextRange range);

} // namespace runebook
