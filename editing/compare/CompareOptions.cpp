#include "editing/compare/CompareOptions.h"

#include "model/FieldTable.h"
#include "platform/TextFolding.h"

#include <QString>
#include <algorithm>
#include <array>

namespace runebook {

namespace {

void removeSpaces(std::string &utf8)
{
    const auto isSpace = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    const auto isAscii = [](char c) { return static_cast<signed char>(c) >= 0; };
    if (std::all_of(utf8.begin(), utf8.end(), isAscii)) {
        std::erase_if(utf8, isSpace);
        return;
    }
    QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    text.removeIf([](QChar c) { return c.isSpace(); });
    utf8 = text.toStdString();
}

bool areAlike(const VXGlyphInfo &left, const VXGlyphInfo &right, GlyphField field,
              const CompareOptions &options)
{
    if (options.ignores(field) || haveEqualValues(left, right, field))
        return true;
    if (!options.ignoresCase && !options.ignoresSpaces)
        return false;
    std::string leftBuffer;
    std::string rightBuffer;
    return comparableValue(left, field, leftBuffer, options)
        == comparableValue(right, field, rightBuffer, options);
}

} // namespace

FieldBits bitOf(GlyphField field)
{
    static const auto bits = [] {
        std::array<FieldBits, 64> made {};
        FieldBits next = 1;
        for (const ComparedField &each : comparedFields()) {
            made.at(static_cast<std::size_t>(each.field)) = next;
            next <<= 1;
        }
        return made;
    }();
    return bits.at(static_cast<std::size_t>(field));
}

bool CompareOptions::ignores(GlyphField field) const
{
    return ignoredFields != 0 && (ignoredFields & bitOf(field)) != 0;
}

std::optional<std::string_view> comparableValue(const VXGlyphInfo &info, GlyphField field,
                                                std::string &buffer, const CompareOptions &options)
{
    if (options.ignores(field))
        return {};
    const std::optional<std::string_view> value = comparableValue(info, field, buffer);
    if (!value || (!options.ignoresCase && !options.ignoresSpaces))
        return value;
    std::string folded;
    appendFoldedUtf8(folded, *value, options.ignoresCase ? Folding(Fold::Case) : Folding());
    if (options.ignoresSpaces)
        removeSpaces(folded);
    buffer = std::move(folded);
    return buffer.empty() ? std::nullopt : std::optional<std::string_view>(buffer);
}

FieldBits differingBits(const VXGlyphInfo &left, const VXGlyphInfo &right, const CompareOptions &options)
{
    FieldBits bits = 0;
    const QList<ComparedField> &fields = comparedFields();
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (!areAlike(left, right, fields.at(i).field, options))
            bits |= FieldBits(1) << i;
    }
    return bits;
}

bool countAsEqual(const InfoPtr &left, const InfoPtr &right, const CompareOptions &options)
{
    if (options.isExact())
        return countAsEqual(left, right);
    for (const ComparedField &field : comparedFields()) {
        const bool isAsked = rowOf(field.field).isEquality && field.field != GlyphField::Desc;
        if (isAsked && !areAlike(*left, *right, field.field, options))
            return false;
    }
    if (options.ignores(GlyphField::Desc))
        return true;
    // As without options: it passes only against one that has one.
    return left->desc().isEmpty() ? !right->desc().isEmpty()
                                  : areAlike(*left, *right, GlyphField::Desc, options);
}

} // namespace runebook
