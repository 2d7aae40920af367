#pragma once

#include "model/GlyphField.h"
#include "model/VXGlyphInfo.h"
#include "platform/predicates/Predicate.h"

#include <QString>
#include <QStringList>
#include <QStringView>

namespace runebook {

/// What the key of a test stands for in a record: a field, or what is worked out of one.
struct SearchKey {
    enum class Kind : quint8 { Unknown, Text, List, Number };
    /// What of the field.
    enum class Part : quint8 {
        Whole,
        Word, ///< of a choice, which is kept as its number
        Length, ///< in characters
        Suffix, ///< of a name, from its first dot behind the first character on
        Presence, ///< "yes" or "no"
        Count, ///< of the entries of a list
    };

    Kind kind = Kind::Unknown;
    GlyphField field = GlyphField::Name;
    Part part = Part::Whole;

    /// The fields by their keys; "accents" is the marks and "description" the desc. Besides: "anchor", "mark"
    /// and "component" are the single entries of anchors, marks and decompose; "letterCase" and
    /// "writingDirection" the words for case and direction; "nameLength", "suffix", "hasCodePoint",
    /// "codePointCount".
    static SearchKey of(QStringView key);
    /// Whether documents tell of every change of it.
    bool isAnnounced() const;
    /// Whether it is worked out of the field's value, which is short then.
    bool isWorkedOut() const { return part != Part::Whole; }
    /// Whether a record keeps the texts as they are asked for.
    bool isKept() const;

    /// The number of a record, for a key of numbers.
    double numberOf(const VXGlyphInfo &info) const;
    /// The text of a record, for a text that is worked out; null when there is none.
    QString textOf(const VXGlyphInfo &info) const;
    friend bool operator==(const SearchKey &, const SearchKey &) = default;
};

/// The keys of what is worked out of fields, in the order in which people see them.
QStringList workedOutKeys();

/// The value that a record has under a key, as predicates see it.
PredicateValue predicateValue(const VXGlyphInfo &info, SearchKey key);
/// The texts of a value; the list may have empty ones, which pass no test.
QStringList textsOf(const PredicateValue &value);

} // namespace runebook
