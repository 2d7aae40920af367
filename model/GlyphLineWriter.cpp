#include "model/GlyphLineWriter.h"

namespace runebook {

namespace {

constexpr std::string_view kAbsent = "(null)";

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
    using F = GlyphField;
    output += "\t<glyph ";
    appendCodePoints(info, output);
    // Counted as a text counts its characters; all of the field's bytes are as many only in ASCII.
    if (info.stored(F::UnicodeLegacy).toString(info.sourceData()).size() >= 4)
        appendField("unicodeLegacy=\"", info, F::UnicodeLegacy, output);
    if (info.stored(F::Name).isAbsent())
        appendAttribute("name=\"", kAbsent, output);
    else
        appendAttribute("name=\"", info.utf8(F::Name, m_buffer), output);
    appendField("sortName=\"", info, F::SortName, output);
    appendField("sortNameOld=\"", info, F::SortNameOld, output);
    appendField("sortNameKeep=\"", info, F::SortNameKeep, output);
    appendField("decompose=\"", info, F::Decompose, output);
    appendField("category=\"", info, F::Category, output);
    if (!appendsCaseAsSubCategory(info, output)) {
        appendField("subCategory=\"", info, F::SubCategory, output);
        if (m_fileVersion >= 2 && info.caseValue() != VXGlyphInfo::noCase)
            appendAttribute("case=\"", caseWord(info.caseValue()), output);
    }
    appendField("script=\"", info, F::Script, output);
    appendField("production=\"", info, F::Production, output);
    if (info.direction() != VXGlyphInfo::DirectionNotSet)
        appendAttribute("direction=\"", directionWord(info.direction()), output);
    if (!info.stored(F::AltNames).isEmpty())
        appendAttribute("altNames=\"", info.utf8(F::AltNames, m_buffer), output);
    appendField("description=\"", info, F::Desc, output);
    appendField("anchors=\"", info, F::Anchors, output);
    appendField(m_fileVersion == 1 ? "accents=\"" : "marks=\"", info, F::Marks, output);
    output += "/>\n";
}

void GlyphLineWriter::appendAttribute(std::string_view nameAndQuote, std::string_view value,
                                      std::string &output)
{
    output += nameAndQuote;
    output += value;
    output += "\" ";
}

void GlyphLineWriter::appendField(std::string_view nameAndQuote, const VXGlyphInfo &info, GlyphField field,
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
