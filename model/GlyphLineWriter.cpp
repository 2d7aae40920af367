#include "model/GlyphLineWriter.h"

#include "model/FieldTable.h"

#include <utility>

namespace runebook {

namespace {

constexpr std::string_view kAbsent = "(null)";
constexpr auto kFields = fieldsBy<&FieldRow::filePlace>();

} // namespace

std::string_view GlyphLineWriter::caseWord(int letterCase)
{
    constexpr std::string_view kWords[] {kAbsent, "upper", "lower", "smallCaps", "minor", kAbsent};
    return letterCase < 6 ? kWords[letterCase] : kAbsent;
}

std::string_view GlyphLineWriter::directionWord(int direction)
{
    constexpr std::string_view kWords[] {"BIDI", "LTR", "RTL", "VTL", "VTR"};
    return direction >= -1 && direction <= 3 ? kWords[direction + 1] : kAbsent;
}

void GlyphLineWriter::append(const VXGlyphInfo &info, std::string &output)
{
    const std::string_view unchanged = info.unchangedLine(m_fileVersion);
    if (!unchanged.empty()) {
        output += unchanged;
        return;
    }
    output += "\t<glyph ";
    // Not in a loop: what the compiler knows of each field is a quarter of the time.
    [&]<std::size_t... I>(std::index_sequence<I...>)
    {
        (appendField<kFields[I]>(info, output), ...);
    }
    (std::make_index_sequence<kFields.size()>());
    output += "/>\n";
}

template <GlyphField Field> void GlyphLineWriter::appendField(const VXGlyphInfo &info, std::string &output)
{
    constexpr std::string_view kOpening = rowOf(Field).fileOpening;
    if constexpr (Field == GlyphField::Unicodes) {
        appendCodePoints(info, output);
    } else if constexpr (Field == GlyphField::UnicodeLegacy) {
        // Counted as a text counts its characters; all of the field's bytes are as many only in ASCII.
        if (info.stored(Field).toString(info.sourceData()).size() >= 4)
            appendText(kOpening, Field, info, output);
    } else if constexpr (Field == GlyphField::Name) {
        if (info.stored(Field).isAbsent())
            appendAttribute(kOpening, kAbsent, output);
        else
            appendAttribute(kOpening, info.utf8(Field, m_buffer), output);
    } else if constexpr (Field == GlyphField::SubCategory) {
        if (!appendsCaseAsSubCategory(info, output))
            appendText(kOpening, Field, info, output);
    } else if constexpr (Field == GlyphField::Case) {
        if (m_fileVersion >= 2 && info.caseValue() != VXGlyphInfo::noCase)
            appendAttribute(kOpening, caseWord(info.caseValue()), output);
    } else if constexpr (Field == GlyphField::Direction) {
        if (info.direction() != VXGlyphInfo::DirectionNotSet)
            appendAttribute(kOpening, directionWord(info.direction()), output);
    } else if constexpr (Field == GlyphField::Marks) {
        appendText(m_fileVersion == 1 ? "accents=\"" : kOpening, Field, info, output);
    } else {
        appendText(kOpening, Field, info, output);
    }
}

void GlyphLineWriter::appendAttribute(std::string_view nameAndQuote, std::string_view value,
                                      std::string &output)
{
    output += nameAndQuote;
    output += value;
    output += "\" ";
}

void GlyphLineWriter::appendText(std::string_view nameAndQuote, GlyphField field, const VXGlyphInfo &info,
                                 std::string &output)
{
    if (!info.stored(field).isEmpty())
        appendAttribute(nameAndQuote, info.utf8(field, m_buffer), output);
}

void GlyphLineWriter::appendCodePoints(const VXGlyphInfo &info, std::string &output)
{
    const FieldValue &value = info.stored(GlyphField::Unicodes);
    if (value.isEmpty())
        return;
    if (value.isPiece()) {
        if (m_fileVersion != 0)
            appendAttribute("unicode=\"", value.bytes(info.sourceData()), output);
        return;
    }
    const QStringList codePoints = info.unicodes();
    if (m_fileVersion != 0)
        appendAttribute("unicode=\"", codePoints.at(0).toStdString(), output);
    if (codePoints.size() >= 2)
        appendAttribute("unicode2=\"", codePoints.at(1).toStdString(), output);
    // The third attribute repeats the second code point: files have always been written so.
    if (codePoints.size() >= 3)
        appendAttribute("unicode3=\"", codePoints.at(1).toStdString(), output);
}

bool GlyphLineWriter::appendsCaseAsSubCategory(const VXGlyphInfo &info, std::string &output)
{
    if (m_fileVersion != 1 || info.caseValue() == VXGlyphInfo::noCase
        || !info.stored(GlyphField::SubCategory).isEmpty())
        return false;
    const bool isUpper = info.caseValue() == VXGlyphInfo::upper;
    const bool isLower = info.caseValue() == VXGlyphInfo::lower;
    appendAttribute("subCategory=\"", isUpper ? "Uppercase" : isLower ? "Lowercase" : kAbsent, output);
    return true;
}

} // namespace runebook
