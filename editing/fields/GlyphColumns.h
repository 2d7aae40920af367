#pragma once

#include "model/VXGlyphInfo.h"

#include <QString>
#include <span>

class VXDocument;

namespace runebook {

/// One column of the table of records.
struct GlyphColumn {
    GlyphField field = GlyphField::Name;
    int width = 0; ///< logical pixels
    bool isShown = true; ///< unless the user says otherwise
};

/// All columns, in the order in which they stand at first. The first one shows what the glyph looks like.
std::span<const GlyphColumn> glyphColumns();
/// The column of a field, or -1.
int columnOfField(GlyphField field);
QString columnTitle(int column);
/// False for the picture of the glyph, which follows from other fields.
bool isEditableColumn(int column);

/// What stands in a cell: the whole text of the field.
QString cellText(const VXDocument &document, const InfoPtr &info, int column);
/// Cut to a length that a cell can show, on one line.
QString cellDisplayText(const QString &text);
/// The same of a field or a cell; the work does not grow with the value.
QString cellDisplayText(const VXGlyphInfo &info, GlyphField field);
QString cellDisplayText(const VXDocument &document, const InfoPtr &info, int column);

/// The title of a field by itself, for captions, menus and undo steps; translated.
QString fieldTitle(GlyphField field);

} // namespace runebook
