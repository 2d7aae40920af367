#include "editing/search/SearchKey.h"

#include "model/FieldTable.h"
#include "platform/predicates/PredicateFormat.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Kind = SearchKey::Kind;
using Part = SearchKey::Part;

constexpr struct {
    QLatin1StringView key;
    SearchKey meaning;
} kWorkedOut[] {
    {"anchor"_L1, {Kind::List, GlyphField::Anchors}},
    {"mark"_L1, {Kind::List, GlyphField::Marks}},
    {"component"_L1, {Kind::List, GlyphField::Decompose}},
    {"letterCase"_L1, {Kind::Text, GlyphField::Case, Part::Word}},
    {"writingDirection"_L1, {Kind::Text, GlyphField::Direction, Part::Word}},
    {"suffix"_L1, {Kind::Text, GlyphField::Name, Part::Suffix}},
    {"nameLength"_L1, {Kind::Number, GlyphField::Name, Part::Length}},
    {"hasCodePoint"_L1, {Kind::Text, GlyphField::Unicodes, Part::Presence}},
    {"codePointCount"_L1, {Kind::Number, GlyphField::Unicodes, Part::Count}},
};

// Other names of fields, as searches have always called them.
constexpr struct {
    QLatin1StringView key;
    GlyphField field;
} kOtherNames[] {{"accents"_L1, GlyphField::Marks}, {"description"_L1, GlyphField::Desc}};

Kind kindOf(GlyphField field)
{
    switch (rowOf(field).kind) {
    case FieldKind::Text:
        return Kind::Text;
    case FieldKind::List:
        return Kind::List;
    case FieldKind::Choice:
    case FieldKind::Number:
        return Kind::Number;
    case FieldKind::Object:
        break;
    }
    return Kind::Unknown;
}

double lengthOfName(const VXGlyphInfo &info)
{
    std::string buffer;
    const std::string_view name = info.utf8(GlyphField::Name, buffer);
    const auto isFirst = [](char byte) { return (byte & 0xC0) != 0x80; };
    return static_cast<double>(std::count_if(name.begin(), name.end(), isFirst));
}

QString suffixOfName(const VXGlyphInfo &info)
{
    constexpr qsizetype kLongest = 1000; // what is longer is no suffix
    const FieldValue &value = info.stored(GlyphField::Name);
    if (value.isPiece()) {
        const std::string_view name = value.bytes(info.sourceData());
        const std::size_t dot = name.find('.', 1);
        return dot == name.npos ? QString()
                                : FieldValue::textOfUtf8(name.substr(dot)).left(kLongest);
    }
    const QString name = info.name();
    const qsizetype dot = name.indexOf(u'.', 1);
    return dot < 0 ? QString() : name.mid(dot, kLongest);
}

} // namespace

SearchKey SearchKey::of(QStringView key)
{
    if (const std::optional<GlyphField> field = fieldForKey(key))
        return {kindOf(*field), *field};
    for (const auto &row : kOtherNames) {
        if (key == row.key)
            return {kindOf(row.field), row.field};
    }
    for (const auto &row : kWorkedOut) {
        if (key == row.key)
            return row.meaning;
    }
    return {};
}

bool SearchKey::isAnnounced() const
{
    // Numbers of fields are quick to read and seldom compared as texts.
    const bool isQuick = kind == Kind::Unknown || (kind == Kind::Number && !isWorkedOut());
    return !isQuick && rowOf(field).setter != FieldSetter::Silent;
}

bool SearchKey::isKept() const
{
    return (kind == Kind::Text || kind == Kind::List) && !isWorkedOut() && isStored(field);
}

double SearchKey::numberOf(const VXGlyphInfo &info) const
{
    if (part == Part::Length)
        return lengthOfName(info);
    if (part == Part::Count)
        return static_cast<double>(info.entriesOf(field).size());
    return info.valueForKey(keyOfField(field)).toDouble();
}

QString SearchKey::textOf(const VXGlyphInfo &info) const
{
    switch (part) {
    case Part::Word:
        return info.displayText(field);
    case Part::Suffix:
        return suffixOfName(info);
    case Part::Presence:
        return info.stored(field).isEmpty() ? u"no"_s : u"yes"_s;
    case Part::Whole:
    case Part::Length:
    case Part::Count:
        break;
    }
    return {};
}

QStringList workedOutKeys()
{
    QStringList keys;
    for (const auto &row : kWorkedOut)
        keys += row.key;
    return keys;
}

PredicateValue predicateValue(const VXGlyphInfo &info, SearchKey key)
{
    switch (key.kind) {
    case Kind::Text:
        return key.isWorkedOut()                 ? key.textOf(info)
            : key.field == GlyphField::Unicode ? info.unicode()
                                               : info.stringValue(key.field);
    case Kind::List:
        // Entries of a field of text are what stands between its commas.
        return rowOf(key.field).kind == FieldKind::List ? info.entriesOf(key.field)
                                                        : info.stored(key.field).toList(info.sourceData());
    case Kind::Number:
        return key.numberOf(info);
    case Kind::Unknown:
        break;
    }
    return {};
}

QStringList textsOf(const PredicateValue &value)
{
    if (const QString *text = std::get_if<QString>(&value))
        return {*text};
    if (const double *number = std::get_if<double>(&value))
        return {PredicateFormat::decimal(*number)};
    const QStringList *list = std::get_if<QStringList>(&value);
    return list ? *list : QStringList();
}

} // namespace runebook
