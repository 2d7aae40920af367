#include "model/ProposedFields.h"

#include "model/NameRules.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"
#include "model/UnicodeScripts.h"
#include "model/VXGlyphInfo.h"

#include <algorithm>
#include <array>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Category {
    QLatin1StringView unicode, category, subCategory;
};

constexpr std::array kCategories {
    Category {"Lu"_L1, "Letter"_L1, "Uppercase"_L1},
    Category {"Ll"_L1, "Letter"_L1, "Lowercase"_L1},
    Category {"Lt"_L1, "Letter"_L1, "Other"_L1},
    Category {"Lm"_L1, "Letter"_L1, "Modifier"_L1},
    Category {"Lo"_L1, "Letter"_L1, "Other"_L1},
    Category {"Mn"_L1, "Mark"_L1, "Nonspacing"_L1},
    Category {"Mc"_L1, "Mark"_L1, "Spacing Combining"_L1},
    Category {"Me"_L1, "Mark"_L1, "Enclosing"_L1},
    Category {"Nd"_L1, "Number"_L1, "Decimal Digit"_L1},
    Category {"Nl"_L1, "Number"_L1, "Letter"_L1},
    Category {"No"_L1, "Number"_L1, "Other"_L1},
    Category {"Pc"_L1, "Punctuation"_L1, "Other"_L1},
    Category {"Pd"_L1, "Punctuation"_L1, "Dash"_L1},
    Category {"Ps"_L1, "Punctuation"_L1, "Parenthesis"_L1},
    Category {"Pe"_L1, "Punctuation"_L1, "Parenthesis"_L1},
    Category {"Pi"_L1, "Punctuation"_L1, "Quote"_L1},
    Category {"Pf"_L1, "Punctuation"_L1, "Quote"_L1},
    Category {"Po"_L1, "Punctuation"_L1, "Other"_L1},
    Category {"Sm"_L1, "Symbol"_L1, "Math"_L1},
    Category {"Sc"_L1, "Symbol"_L1, "Currency"_L1},
    Category {"Sk"_L1, "Symbol"_L1, "Modifier"_L1},
    Category {"So"_L1, "Symbol"_L1, "Other"_L1},
    Category {"Zs"_L1, "Separator"_L1, "Space"_L1},
    Category {"Zl"_L1, "Separator"_L1, "Space"_L1},
    Category {"Zp"_L1, "Separator"_L1, "Space"_L1},
    Category {"Cf"_L1, "Separator"_L1, "Format"_L1},
    Category {"Cc"_L1, "Separator"_L1, "Other"_L1},
    Category {"Co"_L1, "Letter"_L1, "Other"_L1},
};

bool isLetterlike(const QString &block)
{
    return block == "Letterlike Symbols"_L1;
}

/// Sub-categories that do not follow from the general category; null for the others.
QString ownSubCategory(char32_t codePoint, const QString &category)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString tag = data.decomposition(codePoint).tag;
    const QString name = data.name(codePoint);
    const QString block = data.block(codePoint);
    if (tag == "<super>"_L1)
        return u"Superscript"_s;
    if (tag == "<sub>"_L1)
        return u"Small"_s;
    if (tag == "<fraction>"_L1)
        return u"Fraction"_s;
    if (tag == "<circle>"_L1)
        return u"Enclosing"_s;
    if (block == "Arrows"_L1)
        return u"Arrow"_s;
    if (block == "Geometric Shapes"_L1 || block == "Box Drawing"_L1 || block == "Block Elements"_L1)
        return u"Geometry"_s;
    if (block == "Hangul Syllables"_L1)
        return u"Syllable"_s;
    if (block.startsWith("Hangul Jamo"_L1))
        return u"Jamo"_s;
    if (name.contains("VOWEL SIGN"_L1) && category.startsWith(u'M'))
        return u"Matra"_s;
    if (name.contains(" LIGATURE "_L1) && block.contains("Presentation Forms"_L1))
        return u"Ligature"_s;
    if (name.endsWith("QUOTATION MARK"_L1) || codePoint == U'\'')
        return u"Quote"_s;
    return {};
}

std::pair<QString, QString> categories(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString category = data.category(codePoint);
    const QString block = data.block(codePoint);
    if (isLetterlike(block) && category != "Sm"_L1)
        return {u"Symbol"_s, u"Other"_s};
    if (block == "Spacing Modifier Letters"_L1)
        return {u"Symbol"_s, u"Modifier"_s};
    const auto *row = std::find_if(kCategories.begin(), kCategories.end(),
                                   [&](const Category &each) { return each.unicode == category; });
    if (row == kCategories.end())
        return {};
    const QString own = ownSubCategory(codePoint, category);
    const bool isSymbol = own == "Arrow"_L1 || own == "Geometry"_L1;
    return {isSymbol ? u"Symbol"_s : QString(row->category), own.isEmpty() ? QString(row->subCategory) : own};
}

/// The parts of a letter with a mark as it is drawn.
std::vector<char32_t> drawnParts(char32_t codePoint, std::vector<char32_t> parts)
{
    const UnicodeData &data = UnicodeData::shared();
    constexpr char32_t kComma = 0x326, kCedilla = 0x327, kAcute = 0x301, kTonos = 0x384, kAbove = 0x312;
    if (parts.size() != 2)
        return parts;
    if (parts[1] == kCedilla && hasCommaForCedilla(codePoint))
        parts[1] = codePoint == 0x123 ? kAbove : kComma; // above the g
    if (data.script(codePoint) == "Greek"_L1 && parts[1] == kAcute)
        parts[1] = kTonos;
    constexpr int kMarkAbove = 230;
    if (data.combiningClass(parts[1]) == kMarkAbove && (parts[0] == U'i' || parts[0] == U'j'))
        parts[0] = parts[0] == U'i' ? 0x131 : 0x237;
    return parts;
}

/// A syllable as lead, vowel and tail.
std::vector<char32_t> jamoOf(char32_t syllable)
{
    const UnicodeData &data = UnicodeData::shared();
    std::vector<char32_t> parts = data.decomposition(syllable).parts;
    if (parts.empty() || parts.front() < 0xAC00)
        return parts;
    const char32_t tail = parts.back();
    parts = data.decomposition(parts.front()).parts;
    parts.push_back(tail);
    return parts;
}

/// The letters that a jamo is made of: two the same, or two of which the name tells.
std::vector<char32_t> partsOfJamo(const QString &name)
{
    const qsizetype letters = name.lastIndexOf(u' ') + 1;
    const QString position = name.left(letters);
    QStringList words = name.mid(letters).split(u'-');
    if (words.size() == 1 && words.first().startsWith("SSANG"_L1))
        words = {words.first().mid(5), words.first().mid(5)};
    std::vector<char32_t> parts;
    for (const QString &word : words) {
        const auto part = UnicodeData::shared().codePointOfName(QString(position + word));
        if (!part || words.size() < 2)
            return {};
        parts.push_back(*part);
    }
    return parts;
}

QStringList namesOf(const std::vector<char32_t> &parts, const NameOfCharacter &nameOf)
{
    QStringList names;
    for (const char32_t part : parts) {
        const QString name = nameOf ? nameOf(part) : QString();
        if (name.isEmpty())
            return {};
        names += name;
    }
    return names;
}

} // namespace

QString proposedDescription(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString name = data.name(codePoint);
    return name.isEmpty() ? data.aliases(codePoint).value(0) : name;
}

QString proposedScript(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString block = data.block(codePoint);
    const QString name = data.name(codePoint);
    if (name.startsWith("BLACK-LETTER "_L1))
        return u"Black Letter"_s;
    if (isLetterlike(block))
        return {};
    if (block == "Mathematical Alphanumeric Symbols"_L1 || name == "MEDIUM MATHEMATICAL SPACE"_L1)
        return u"math"_s;
    if (block == "Musical Symbols"_L1)
        return u"musical"_s;
    if (block == "Phaistos Disc"_L1)
        return u"phaistosDisc"_s;
    if (name.contains("ROMAN NUMERAL "_L1))
        return u"roman"_s;
    const QString script = data.script(codePoint);
    if (data.category(codePoint) == "Cf"_L1)
        return {};
    const bool isSpacingAccent = block == "Greek and Coptic"_L1 && data.category(codePoint) == "Sk"_L1;
    if (hasNoScript(script))
        return isSpacingAccent ? QString() : scriptWord(scriptOfBlock(block));
    return isSpacingAccent ? QString() : scriptWord(script);
}

int proposedCase(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString tag = data.decomposition(codePoint).tag;
    const QString category = data.category(codePoint);
    if (isLetterlike(data.block(codePoint)))
        return VXGlyphInfo::noCase;
    if ((tag == "<super>"_L1 || tag == "<sub>"_L1) && (category == "No"_L1 || category.startsWith(u'L')))
        return VXGlyphInfo::minor;
    if (category == "Lu"_L1 || (category == "Nl"_L1 && data.lower(codePoint) != codePoint))
        return VXGlyphInfo::upper;
    if (category == "Ll"_L1 && data.name(codePoint).contains("LETTER SMALL CAPITAL "_L1))
        return VXGlyphInfo::smallCaps;
    const bool isLower = category == "Ll"_L1 || (category == "Nl"_L1 && data.upper(codePoint) != codePoint);
    return isLower ? VXGlyphInfo::lower : VXGlyphInfo::noCase;
}

int proposedDirection(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString bidi = data.bidiClass(codePoint);
    if (data.category(codePoint) == "Cf"_L1)
        return VXGlyphInfo::DirectionNotSet;
    if (bidi == "R"_L1 || bidi == "AL"_L1)
        return VXGlyphInfo::RTL;
    if (data.isMirrored(codePoint))
        return VXGlyphInfo::BIDI;
    const QString script = data.script(codePoint);
    const bool isOfRightToLeft = isRightToLeft(hasNoScript(script) ? scriptOfBlock(data.block(codePoint)) : script);
    if (!isOfRightToLeft)
        return VXGlyphInfo::DirectionNotSet;
    return data.category(codePoint) == "Nd"_L1 ? VXGlyphInfo::LTR : VXGlyphInfo::RTL;
}

std::vector<char32_t> proposedComponents(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString block = data.block(codePoint);
    const UnicodeData::Decomposition found = data.decomposition(codePoint);
    const QString category = data.category(codePoint);
    if (category.startsWith(u'S') && block != "Musical Symbols"_L1 && found.parts.size() == 2)
        return {}; // drawn as a whole
    if (block == "Hangul Syllables"_L1)
        return jamoOf(codePoint);
    if (block.startsWith("Hangul Jamo"_L1))
        return partsOfJamo(data.name(codePoint));
    if (found.tag.isEmpty())
        return drawnParts(codePoint, found.parts);
    if (found.tag == "<noBreak>"_L1)
        return codePoint == 0xA0 || category.startsWith(u'P') ? found.parts : std::vector<char32_t>();
    // Of one part they are the same character in another shape; with a space in front, that which stands alone.
    const bool isComposed = found.tag == "<compat>"_L1 || found.tag == "<fraction>"_L1;
    const bool isNumeral = proposedScript(codePoint) == "roman"_L1;
    const bool areSeveral = found.parts.size() > 1 && found.parts.front() != U' ' && !isLetterlike(block);
    return isComposed && (areSeveral || isNumeral) ? found.parts : std::vector<char32_t>();
}

ProposedFields proposedFields(char32_t codePoint, const NameOfCharacter &nameOf)
{
    ProposedFields fields;
    if (!UnicodeData::shared().isAssigned(codePoint))
        return fields;
    fields.name = proposedName(codePoint, nameOf);
    fields.description = proposedDescription(codePoint);
    std::tie(fields.category, fields.subCategory) = categories(codePoint);
    fields.script = proposedScript(codePoint);
    fields.letterCase = proposedCase(codePoint);
    fields.direction = proposedDirection(codePoint);
    fields.decomposition = namesOf(proposedComponents(codePoint), nameOf);
    const QString production = productionNameFor(fields.name, hexStringFromInt(codePoint));
    if (production != fields.name)
        fields.production = production;
    return fields;
}

} // namespace runebook
