#include "editing/fields/GlyphColumns.h"

#include "document/VXDocument.h"
#include "editing/fields/LongValues.h"
#include "model/FieldTable.h"
#include "platform/ShownText.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// The cell of the glyph itself goes under the field it is mostly made from.
constexpr GlyphField kPicture = GlyphField::UnicodeChar;

constexpr auto kColumns = [] {
    constexpr auto kFields = fieldsBy<[](const FieldRow &row) { return row.columnWidth != 0; }>();
    std::array<GlyphColumn, kFields.size()> columns;
    std::transform(kFields.begin(), kFields.end(), columns.begin(), [](GlyphField field) {
        const FieldRow &row = rowOf(field);
        return GlyphColumn {field, row.columnWidth, row.isColumnShown};
    });
    return columns;
}();

const GlyphColumn &columnAt(int column)
{
    return kColumns[static_cast<std::size_t>(column)];
}

/// Of a glyph made of made-up glyphs the explanation of the parts comes along; a cell has no room for it.
QString pictureText(const VXDocument &document, const InfoPtr &info)
{
    return document.baseStringForInfo(info).section(" = "_L1, 0, 0);
}

} // namespace

std::span<const GlyphColumn> glyphColumns()
{
    return kColumns;
}

int columnOfField(GlyphField field)
{
    for (std::size_t i = 0; i < kColumns.size(); ++i) {
        if (kColumns[i].field == field)
            return static_cast<int>(i);
    }
    return -1;
}

QString columnTitle(int column)
{
    return titleOfField(columnAt(column).field);
}

QString fieldTitle(GlyphField field)
{
    return titleOfField(field);
}

bool isEditableColumn(int column)
{
    return columnAt(column).field != kPicture;
}

QString cellText(const VXDocument &document, const InfoPtr &info, int column)
{
    const GlyphField field = columnAt(column).field;
    return field == kPicture ? pictureText(document, info) : info->displayText(field);
}

QString cellDisplayText(const QString &text)
{
    QString shown = beginningOf(text, kMostInCell).toString();
    for (QChar &character : shown) {
        if (character < u' ' || character == QChar::LineSeparator || character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return shown;
}

QString cellDisplayText(const VXGlyphInfo &info, GlyphField field)
{
    return cellDisplayText(shownInCell(info, field));
}

QString cellDisplayText(const VXDocument &document, const InfoPtr &info, int column)
{
    const GlyphField field = columnAt(column).field;
    return field == kPicture ? cellDisplayText(pictureText(document, info)) : cellDisplayText(*info, field);
}

} // namespace runebook
