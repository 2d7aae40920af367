#include "editing/fields/GlyphColumns.h"

#include "document/VXDocument.h"
#include "editing/fields/LongValues.h"
#include "platform/ShownText.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// The cell of the glyph itself goes under the field it is mostly made from.
constexpr GlyphField kPicture = GlyphField::UnicodeChar;

constexpr GlyphColumn kColumns[] {
    {kPicture, 52, true},
    {GlyphField::Name, 170, true},
    {GlyphField::Unicodes, 90, true},
    {GlyphField::Category, 92, true},
    {GlyphField::SubCategory, 104, true},
    {GlyphField::Case, 78, false},
    {GlyphField::Script, 92, true},
    {GlyphField::Direction, 78, false},
    {GlyphField::Production, 130, true},
    {GlyphField::SortName, 120, true},
    {GlyphField::SortNameKeep, 120, false},
    {GlyphField::SortNameOld, 120, false},
    {GlyphField::Decompose, 150, true},
    {GlyphField::Anchors, 130, false},
    {GlyphField::Marks, 150, false},
    {GlyphField::AltNames, 140, false},
    {GlyphField::UnicodeLegacy, 90, false},
    {GlyphField::Desc, 260, true},
};

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
    for (std::size_t i = 0; i < std::size(kColumns); ++i) {
        if (kColumns[i].field == field)
            return static_cast<int>(i);
    }
    return -1;
}

QString columnTitle(int column)
{
    return titleOfField(kColumns[column].field);
}

QString fieldTitle(GlyphField field)
{
    return titleOfField(field);
}

bool isEditableColumn(int column)
{
    return kColumns[column].field != kPicture;
}

QString cellText(const VXDocument &document, const InfoPtr &info, int column)
{
    const GlyphField field = kColumns[column].field;
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
    const GlyphField field = kColumns[column].field;
    return field == kPicture ? cellDisplayText(pictureText(document, info)) : cellDisplayText(*info, field);
}

} // namespace runebook
