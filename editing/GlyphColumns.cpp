#include "editing/GlyphColumns.h"

#include "document/VXDocument.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// The cell of the glyph itself goes under the field it is mostly made from.
constexpr GlyphField kPicture = GlyphField::UnicodeChar;

constexpr GlyphColumn kColumns[] {
    {kPicture, QT_TRANSLATE_NOOP("GlyphColumns", "Glyph"), 52, true},
    {GlyphField::Name, QT_TRANSLATE_NOOP("GlyphColumns", "Name"), 170, true},
    {GlyphField::Unicodes, QT_TRANSLATE_NOOP("GlyphColumns", "Unicode"), 90, true},
    {GlyphField::Category, QT_TRANSLATE_NOOP("GlyphColumns", "Category"), 92, true},
    {GlyphField::SubCategory, QT_TRANSLATE_NOOP("GlyphColumns", "Subcategory"), 104, true},
    {GlyphField::Case, QT_TRANSLATE_NOOP("GlyphColumns", "Case"), 78, false},
    {GlyphField::Script, QT_TRANSLATE_NOOP("GlyphColumns", "Script"), 92, true},
    {GlyphField::Direction, QT_TRANSLATE_NOOP("GlyphColumns", "Direction"), 78, false},
    {GlyphField::Production, QT_TRANSLATE_NOOP("GlyphColumns", "Production Name"), 130, true},
    {GlyphField::SortName, QT_TRANSLATE_NOOP("GlyphColumns", "Sort Name"), 120, true},
    {GlyphField::SortNameKeep, QT_TRANSLATE_NOOP("GlyphColumns", "Second Sort Name"), 120, false},
    {GlyphField::SortNameOld, QT_TRANSLATE_NOOP("GlyphColumns", "Old Sort Name"), 120, false},
    {GlyphField::Decompose, QT_TRANSLATE_NOOP("GlyphColumns", "Decompose"), 150, true},
    {GlyphField::Anchors, QT_TRANSLATE_NOOP("GlyphColumns", "Anchors"), 130, false},
    {GlyphField::Marks, QT_TRANSLATE_NOOP("GlyphColumns", "Accents"), 150, false},
    {GlyphField::AltNames, QT_TRANSLATE_NOOP("GlyphColumns", "Alternate Names"), 140, false},
    {GlyphField::UnicodeLegacy, QT_TRANSLATE_NOOP("GlyphColumns", "Legacy Unicode"), 90, false},
    {GlyphField::Desc, QT_TRANSLATE_NOOP("GlyphColumns", "Description"), 260, true},
};

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
    return QCoreApplication::translate("GlyphColumns", kColumns[column].title);
}

QString fieldTitle(GlyphField field)
{
    const int column = columnOfField(field);
    return column < 0 ? keyOfField(field) : columnTitle(column);
}

bool isEditableColumn(int column)
{
    return kColumns[column].field != kPicture;
}

QString cellText(const VXDocument &document, const InfoPtr &info, int column)
{
    const GlyphField field = kColumns[column].field;
    if (field != kPicture)
        return info->displayText(field);
    // Of a glyph made of made-up glyphs the explanation of the parts comes along; a cell has no room for it.
    return document.baseStringForInfo(info).section(" = "_L1, 0, 0);
}

QString cellDisplayText(const QString &text)
{
    constexpr qsizetype kLongest = 512;
    QString shown = text.left(kLongest);
    for (QChar &character : shown) {
        if (character < u' ' || character == QChar::LineSeparator || character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return shown;
}

} // namespace runebook
