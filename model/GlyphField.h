#pragma once

#include <QString>
#include <optional>

namespace runebook {

/// The fields of a record. Those before Direction are kept as texts or lists. What is known about each stands
/// in model/FieldTable.h.
enum class GlyphField : quint8 {
    Name,
    Category,
    SubCategory,
    Marks,
    Anchors,
    UnicodeLegacy,
    Unicodes,
    Script,
    Production,
    SortName,
    SortNameKeep,
    SortNameOld,
    AltNames,
    Desc,
    Decompose,
    UnicharString,
    Direction,
    Case,
    Index,
    UnicodeChar,
    Document,
    Unicode, ///< derived: the first code point
};

inline constexpr int kStoredFieldCount = static_cast<int>(GlyphField::Direction);
inline constexpr int kFieldCount = static_cast<int>(GlyphField::Unicode) + 1;

/// Whether the field is kept as a text or a list.
constexpr bool isStored(GlyphField field)
{
    return static_cast<int>(field) < kStoredFieldCount;
}

/// The key under which scripts, tables and predicates know the field.
QString keyOfField(GlyphField field);
/// The field of a key; nothing for a key that names none. Keys match exactly.
std::optional<GlyphField> fieldForKey(QStringView key);
/// How people call the field: "Sort Name", translated; the key of one that no window shows.
QString titleOfField(GlyphField field);

} // namespace runebook
