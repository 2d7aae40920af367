#pragma once

#include "document/GlyphLookups.h"

#include <QFont>
#include <QTextLayout>

namespace runebook {

/// A text with the formats of its parts, for one line of a preview.
struct FormattedText {
    QString text;
    QList<QTextLayout::FormatRange> formats;
    Qt::Alignment alignment = Qt::AlignHCenter;
};

/// The text that shows what a record stands for: its character, or the characters that compose it.
namespace GlyphPreview {

/// The character or the characters that compose a record, such as "fi = f + i"; "" when there is none.
QString text(const GlyphLookups &lookups, const InfoPtr &info);
/// The characters that the record itself stands for.
QString baseText(const GlyphLookups &lookups, const InfoPtr &info);
/// The same as text() in the font that was chosen for the record's script.
FormattedText formatted(const GlyphLookups &lookups, const InfoPtr &info);
/// \a text in \a font, the signs between its parts in grey.
FormattedText formatted(const QString &text, const QFont &font);

} // namespace GlyphPreview

} // namespace runebook
