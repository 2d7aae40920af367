#pragma once

#include "model/GlyphReading.h"
#include "model/VXGlyphInfo.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace runebook {

// What the columns of a table are called, and how the values of records stand in cells.
//
// Every field that files hold has a column. Code points are written as 0x0041, since spreadsheets make other
// values of 0041 and 1E10; 0041, U+0041 and 0x0041 are read. Lists are joined with ", ". Direction and case
// are their words; an empty cell leaves them unset.

/// The fields that have columns, in the order in which people see them.
std::span<const GlyphField> tableFields();
/// What programs call the column of a field: "unicode", "name", "subCategory".
QString headingOfField(GlyphField field);
/// The field of a column: by its key or by the title that windows show, in any case, and by the other names
/// that imports know.
std::optional<GlyphField> fieldOfHeading(QStringView heading);

/// What stands in front of the code points of a cell.
inline constexpr std::string_view kCodePointPrefix = "0x";
/// The cell of a field, as UTF-8; lies in the record, in \a buffer or in the program. Empty for an absent
/// value. Code points that would not be read as they are without a prefix get the usual one.
std::string_view cellOf(const VXGlyphInfo &info, GlyphField field, std::string &buffer,
                        std::string_view codePointPrefix = kCodePointPrefix);
/// The prefix that the first code point of \a cell has: "0x", "U+" or none.
std::string_view codePointPrefixOf(std::string_view cell);
/// The same as a text.
QString cellTextOf(const VXGlyphInfo &info, GlyphField field);

/// Why \a cell is no value of \a field, in a sentence without a subject: "“up” is no case". Null when it is
/// one.
QString objectionToCell(GlyphField field, QStringView cell);
/// Makes \a cell the value of \a field as an edit, with its undo step and notice where the record has another
/// one. False when there is an objection; nothing has changed then.
bool storeCell(VXGlyphInfo &info, GlyphField field, const QString &cell);
/// Whether storing \a cell would leave the record as it is.
bool isCellOf(const VXGlyphInfo &info, GlyphField field, std::string_view cellUtf8);

/// Fills a field of a record that is read. \a cell may lie in the bytes of its source, \a isPiece, or
/// elsewhere. False for a cell that is no value of the field, which stays unset.
bool readCell(VXGlyphInfo::Reading &glyph, GlyphField field, std::string_view cell, bool isPiece);

/// Whether a table with a column for the field would give back another value than the record has: what it
/// would be, null for nothing. Absent and empty are the same.
struct CellChange {
    GlyphField field;
    QString after;
};
std::optional<CellChange> changeInTable(const VXGlyphInfo &info, GlyphField field);
/// Whether the record has a value there that a table without the column does not hold. Left to right is what
/// records without direction have as well.
bool hasTableValue(const VXGlyphInfo &info, GlyphField field);

} // namespace runebook
