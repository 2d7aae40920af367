#pragma once

#include "model/FieldWords.h"
#include "model/GlyphField.h"

#include <QObject>
#include <algorithm>
#include <array>
#include <functional>
#include <string_view>

namespace runebook {

/// What a field holds.
enum class FieldKind : quint8 {
    Text,
    List, ///< of texts
    Choice, ///< one of a few words, kept as its number
    Number,
    Object,
};

/// What storing a text in a field takes.
enum class FieldSetter : quint8 {
    Plain, ///< the text is kept, with an undo step
    OwnRule, ///< the field's own setter refuses some, or makes something else of it
    Silent, ///< as before; and no undo step, and no word to the document
};

/// How people edit a field in the pane.
enum class FieldEditor : quint8 {
    None, ///< it is not there
    Line,
    CheckedLine, ///< says while somebody types what is wrong
    Words, ///< a line that offers the vocabulary
    Tokens,
    Paragraphs,
};

/// What a search in one field makes of the text; each keeps its habit, and they differ on purpose.
enum class SearchHabit : quint8 {
    AnyCase, ///< a part of the value, in either case
    CaseAsSet, ///< case and diacritics count when "Match Case" is on
    CaseAsSetAnyMarks, ///< case counts then, diacritics never
    Name, ///< of several words each, as before
    Production, ///< of several words each; case and diacritics count when "Match Case" is on
    CodePoints, ///< or a range of them
};

/// What is known about one field. A place of 0 is none; places only tell what stands before what.
struct FieldRow { // NOLINT(clang-analyzer-optin.performance.Padding): in the order of reading; a few rows
    GlyphField field;
    std::string_view key; ///< for scripts, tables and predicates
    const char *title = nullptr; ///< in English; null for a field that no window shows
    FieldKind kind = FieldKind::Text;

    int filePlace = 0; ///< among the attributes of a line
    std::string_view fileOpening = {}; ///< of the attribute, as far as the value
    const char *exportKey = nullptr; ///< in the defined table export, in the order of files; null: not there

    int columnWidth = 0; ///< in logical pixels; 0: no column
    bool isColumnShown = true; ///< unless the user says otherwise
    FieldEditor editor = FieldEditor::None;
    const char *caption = nullptr; ///< how the object names of its captions end
    int comparePlace = 0; ///< in the comparison
    int samePlace = 0; ///< among what records to select may have in common
    int replaceTag = 0; ///< the number of its item in find and replace, and its place there; 0: none
    int searchTag = 0; ///< the same in the search menu
    SearchHabit searchHabit = SearchHabit::AnyCase;
    std::string_view searchKey = {}; ///< what searches call it, if not by its key

    FieldSetter setter = FieldSetter::Plain;
    QStringList (*vocabulary)() = nullptr; ///< the words that it is usually filled with
    bool isEquality = true; ///< whether records that differ in it are unequal: VXGlyphInfo::isEqualToInfo()
    bool isCopied = true; ///< by VXGlyphInfo::copy()
    bool isArchived = true; ///< by VXGlyphInfo::encodeWithCoder()
};

/// All fields, in the order in which people see them: as columns and in the pane. Whatever lists fields is a
/// filter over this, see fieldsBy().
inline constexpr FieldRow kFieldTable[] {
    // The cell that shows the glyph goes under the field that it is mostly made from.
    {.field = GlyphField::UnicodeChar,
     .key = "unicodeChar",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Glyph"),
     .kind = FieldKind::Number,
     .columnWidth = 52},
    {.field = GlyphField::Name,
     .key = "name",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Name"),
     .filePlace = 30,
     .fileOpening = "name=\"",
     .exportKey = "name",
     .columnWidth = 170,
     .editor = FieldEditor::CheckedLine,
     .caption = "Name",
     .comparePlace = 20,
     .replaceTag = 2,
     .searchTag = 2,
     .searchHabit = SearchHabit::Name},
    {.field = GlyphField::Unicodes,
     .key = "unicodes",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Unicode"),
     .kind = FieldKind::List,
     .filePlace = 10,
     .fileOpening = "unicode=\"",
     .exportKey = "unicode",
     .columnWidth = 90,
     .editor = FieldEditor::Tokens,
     .caption = "Unicode",
     .comparePlace = 10,
     .searchTag = 3,
     .searchHabit = SearchHabit::CodePoints,
     .searchKey = "unicode"},
    {.field = GlyphField::Category,
     .key = "category",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Category"),
     .filePlace = 80,
     .fileOpening = "category=\"",
     .exportKey = "category",
     .columnWidth = 92,
     .editor = FieldEditor::Words,
     .caption = "Category",
     .comparePlace = 60,
     .samePlace = 10,
     .searchTag = 4,
     .vocabulary = &categoryWords},
    {.field = GlyphField::SubCategory,
     .key = "subCategory",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Subcategory"),
     .filePlace = 90,
     .fileOpening = "subCategory=\"",
     .exportKey = "subCategory",
     .columnWidth = 104,
     .editor = FieldEditor::Words,
     .caption = "SubCategory",
     .comparePlace = 70,
     .samePlace = 20,
     .searchTag = 5,
     .searchHabit = SearchHabit::CaseAsSetAnyMarks,
     .vocabulary = &subCategoryWords},
    {.field = GlyphField::Case,
     .key = "case",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Case"),
     .kind = FieldKind::Choice,
     .filePlace = 100,
     .fileOpening = "case=\"",
     .columnWidth = 78,
     .isColumnShown = false,
     .editor = FieldEditor::Words,
     .caption = "Case",
     .comparePlace = 160,
     .samePlace = 40,
     .vocabulary = &caseWords,
     .isEquality = false},
    {.field = GlyphField::Script,
     .key = "script",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Script"),
     .filePlace = 110,
     .fileOpening = "script=\"",
     .exportKey = "script",
     .columnWidth = 92,
     .editor = FieldEditor::Words,
     .caption = "Script",
     .comparePlace = 80,
     .samePlace = 30,
     .searchTag = 6,
     .vocabulary = &scriptWords},
    {.field = GlyphField::Direction,
     .key = "direction",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Direction"),
     .kind = FieldKind::Choice,
     .filePlace = 130,
     .fileOpening = "direction=\"",
     .columnWidth = 78,
     .isColumnShown = false,
     .editor = FieldEditor::Words,
     .caption = "Direction",
     .comparePlace = 170,
     .samePlace = 50,
     .vocabulary = &directionWords},
    {.field = GlyphField::Production,
     .key = "production",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Production Name"),
     .filePlace = 120,
     .fileOpening = "production=\"",
     .exportKey = "production",
     .columnWidth = 130,
     .editor = FieldEditor::CheckedLine,
     .caption = "Production",
     .comparePlace = 120,
     .samePlace = 90,
     .replaceTag = 3,
     .searchTag = 9,
     .searchHabit = SearchHabit::Production},
    {.field = GlyphField::SortName,
     .key = "sortName",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Sort Name"),
     .filePlace = 40,
     .fileOpening = "sortName=\"",
     .exportKey = "sortName",
     .columnWidth = 120,
     .editor = FieldEditor::Line,
     .caption = "SortName",
     .comparePlace = 30,
     .replaceTag = 6},
    {.field = GlyphField::SortNameKeep,
     .key = "sortNameKeep",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Second Sort Name"),
     .filePlace = 60,
     .fileOpening = "sortNameKeep=\"",
     .exportKey = "sortNameKeep",
     .columnWidth = 120,
     .isColumnShown = false,
     .editor = FieldEditor::Line,
     .caption = "SortNameKeep",
     .comparePlace = 40},
    {.field = GlyphField::SortNameOld,
     .key = "sortNameOld",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Old Sort Name"),
     .filePlace = 50,
     .fileOpening = "sortNameOld=\"",
     .columnWidth = 120,
     .isColumnShown = false,
     .caption = "SortNameOld",
     .comparePlace = 50,
     .isEquality = false,
     .isCopied = false},
    {.field = GlyphField::Decompose,
     .key = "decompose",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Decompose"),
     .filePlace = 70,
     .fileOpening = "decompose=\"",
     .exportKey = "decompose",
     .columnWidth = 150,
     .editor = FieldEditor::Line,
     .caption = "Decompose",
     .comparePlace = 90,
     .samePlace = 60,
     .replaceTag = 8,
     .searchTag = 7,
     .searchHabit = SearchHabit::CaseAsSet},
    {.field = GlyphField::Anchors,
     .key = "anchors",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Anchors"),
     .filePlace = 160,
     .fileOpening = "anchors=\"",
     .exportKey = "anchors",
     .columnWidth = 130,
     .isColumnShown = false,
     .editor = FieldEditor::Line,
     .caption = "Anchors",
     .comparePlace = 100,
     .samePlace = 80,
     .replaceTag = 5,
     .searchTag = 8},
    // Called accents by files of version 1, by exports, searches and people.
    {.field = GlyphField::Marks,
     .key = "marks",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Accents"),
     .filePlace = 170,
     .fileOpening = "marks=\"",
     .exportKey = "accents",
     .columnWidth = 150,
     .isColumnShown = false,
     .editor = FieldEditor::Line,
     .caption = "Accents",
     .comparePlace = 110,
     .samePlace = 70,
     .replaceTag = 9,
     .searchTag = 11,
     .searchKey = "accents",
     .setter = FieldSetter::OwnRule},
    {.field = GlyphField::AltNames,
     .key = "altNames",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Alternate Names"),
     .kind = FieldKind::List,
     .filePlace = 140,
     .fileOpening = "altNames=\"",
     .exportKey = "altNames",
     .columnWidth = 140,
     .isColumnShown = false,
     .editor = FieldEditor::CheckedLine,
     .caption = "AltNames",
     .comparePlace = 130,
     .replaceTag = 4,
     .searchTag = 10,
     .searchHabit = SearchHabit::CaseAsSet,
     .setter = FieldSetter::OwnRule},
    {.field = GlyphField::UnicodeLegacy,
     .key = "unicodeLegacy",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Legacy Unicode"),
     .filePlace = 20,
     .fileOpening = "unicodeLegacy=\"",
     .columnWidth = 90,
     .isColumnShown = false,
     .editor = FieldEditor::Line,
     .caption = "UnicodeLegacy",
     .comparePlace = 140,
     .setter = FieldSetter::Silent,
     .isEquality = false,
     .isArchived = false},
    {.field = GlyphField::Desc,
     .key = "desc",
     .title = QT_TRANSLATE_NOOP("GlyphColumns", "Description"),
     .filePlace = 150,
     .fileOpening = "description=\"",
     .exportKey = "desc",
     .columnWidth = 260,
     .editor = FieldEditor::Paragraphs,
     .caption = "Description",
     .comparePlace = 150,
     .replaceTag = 7,
     .searchTag = 12,
     .setter = FieldSetter::OwnRule,
     .isCopied = false},
    {.field = GlyphField::UnicharString,
     .key = "unicharString",
     .setter = FieldSetter::Silent,
     .isEquality = false,
     .isCopied = false,
     .isArchived = false},
    {.field = GlyphField::Index, .key = "index", .kind = FieldKind::Number},
    {.field = GlyphField::Document, .key = "document", .kind = FieldKind::Object},
    // The first of the code points.
    {.field = GlyphField::Unicode, .key = "unicode", .setter = FieldSetter::OwnRule},
};

/// The row of each field, by number: compilers with more checks compare no addresses beforehand.
inline constexpr auto kRowsOfFields = [] {
    std::array<std::size_t, kFieldCount> rows {};
    rows.fill(kFieldCount);
    for (std::size_t row = 0; row < std::size(kFieldTable); ++row)
        rows[static_cast<std::size_t>(kFieldTable[row].field)] = row;
    return rows;
}();
static_assert(std::size(kFieldTable) == kFieldCount
              && std::find(kRowsOfFields.begin(), kRowsOfFields.end(), std::size_t {kFieldCount})
                  == kRowsOfFields.end());

constexpr const FieldRow &rowOf(GlyphField field)
{
    return kFieldTable[kRowsOfFields[static_cast<std::size_t>(field)]];
}

/// The fields for whose rows \a PlaceOf, a member or a function, gives another place than 0, in the order of
/// their places; those with the same one as the table has them. Made by the compiler:
/// constexpr auto kCompared = fieldsBy<&FieldRow::comparePlace>();
template <auto PlaceOf> consteval auto fieldsBy()
{
    constexpr auto kPlaceOf = [](const FieldRow &row) { return static_cast<int>(std::invoke(PlaceOf, row)); };
    constexpr auto kCount = std::count_if(std::begin(kFieldTable), std::end(kFieldTable),
                                          [kPlaceOf](const FieldRow &row) { return kPlaceOf(row) != 0; });
    std::array<GlyphField, kCount> fields {};
    std::size_t count = 0;
    for (const FieldRow &row : kFieldTable) {
        if (kPlaceOf(row) == 0)
            continue;
        std::size_t i = count++;
        for (; i > 0 && kPlaceOf(rowOf(fields[i - 1])) > kPlaceOf(row); --i)
            fields[i] = fields[i - 1];
        fields[i] = row.field;
    }
    return fields;
}

} // namespace runebook
