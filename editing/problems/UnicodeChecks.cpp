#include "editing/problems/UnicodeChecks.h"

#include "model/GlyphList.h"
#include "model/NameRules.h"
#include "model/ProposedFields.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"
#include "model/UnicodeScripts.h"

#include <QHash>
#include <algorithm>
#include <array>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kLongestFontName = 63;

/// What the checks ask of characters of one kind.
struct Facts {
    bool isCapital = false, isSmall = false, isLeftToRight = false, isRightToLeft = false;
    std::string script; ///< in the vocabulary; empty where Unicode leaves it open
};

const Facts &factsOf(char32_t codePoint)
{
    static const std::vector<Facts> facts = [] {
        const UnicodeData &data = UnicodeData::shared();
        std::vector<Facts> all(data.kindCount() + 1);
        std::vector<bool> isKnown(all.size());
        for (char32_t code = 0; code <= QChar::LastValidCodePoint; ++code) {
            const quint16 kind = data.kindOf(code);
            if (isKnown[kind])
                continue;
            isKnown[kind] = true;
            const QString bidi = data.bidiClass(code);
            all[kind] = {data.category(code) == "Lu"_L1, data.category(code) == "Ll"_L1,
                         bidi == "L"_L1 && data.isAssigned(code), bidi == "R"_L1 || bidi == "AL"_L1,
                         scriptWord(data.script(code)).toStdString()};
        }
        return all;
    }();
    return facts[UnicodeData::shared().kindOf(codePoint)];
}

bool isOtherCase(int letterCase, const Facts &facts)
{
    return (letterCase == VXGlyphInfo::upper && facts.isSmall)
        || (letterCase == VXGlyphInfo::lower && facts.isCapital);
}

bool isOtherDirection(int direction, const Facts &facts)
{
    return (direction == VXGlyphInfo::RTL && facts.isLeftToRight)
        || (direction == VXGlyphInfo::LTR && facts.isRightToLeft);
}

/// Some scripts of the vocabulary are kinds of signs; whoever says so has a reason.
bool isOtherScript(std::string_view script, const Facts &facts, char32_t codePoint)
{
    if (script.empty() || facts.script.empty() || facts.script == script || script == "math"
        || script == "musical" || script == "roman" || script == "Black Letter" || script == "kana")
        return false;
    const QString word = QString::fromUtf8(script.data(), qsizetype(script.size()));
    const QString proposed = proposedScript(codePoint);
    return VXGlyphInfo::scripts().contains(word) && !proposed.isEmpty() && proposed != word;
}

/// In the form that Unicode has: several words of capitals.
bool isInFormOfName(std::string_view text)
{
    return text.find(' ') != text.npos && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ' || c == '-';
           });
}

/// A name with a note behind it is the character's, too.
bool isOtherDescription(std::string_view description, char32_t codePoint)
{
    if (!isInFormOfName(description))
        return false;
    const UnicodeData &data = UnicodeData::shared();
    if (data.beginsWithName(description, codePoint) || data.asciiName(codePoint).empty())
        return false;
    return !data.aliases(codePoint).contains(
        QString::fromUtf8(description.data(), qsizetype(description.size())));
}

/// The code points that a name made of them stands for: "uni0041", "u1F600", "uni0066006C"; none for others.
QStringList codePointsInName(QStringView name)
{
    const bool isLong = name.startsWith("uni"_L1);
    const QStringView digits = name.mid(isLong ? 3 : 1);
    const auto isUpperHex = [](QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F'); };
    if (!name.startsWith(u'u') || !std::all_of(digits.begin(), digits.end(), isUpperHex))
        return {};
    QStringList codes;
    if (isLong && digits.size() % 4 == 0) {
        for (qsizetype i = 0; i < digits.size(); i += 4)
            codes += digits.mid(i, 4).toString();
    } else if (!isLong && digits.size() >= 4 && digits.size() <= 6) {
        codes += digits.toString();
    }
    return codes;
}

/// Characters that fonts have one glyph for, so that the name of one serves the other.
bool areOneGlyph(char32_t a, char32_t b)
{
    static constexpr std::array<std::pair<char32_t, char32_t>, 9> kPairs {{{0x2206, 0x394},
                                                                           {0x2010, '-'},
                                                                           {0xAD, '-'},
                                                                           {0x2219, 0xB7},
                                                                           {0x22C5, 0xB7},
                                                                           {0x2215, 0x2044},
                                                                           {0x21A, 0x162},
                                                                           {0x21B, 0x163},
                                                                           {0x2C9, 0xAF}}};
    const auto normal = [](char32_t code) {
        return QString::fromUcs4(&code, 1).normalized(QString::NormalizationForm_KC);
    };
    return normal(a) == normal(b) || std::any_of(kPairs.begin(), kPairs.end(), [&](const auto &pair) {
               return pair == std::pair(a, b) || pair == std::pair(b, a);
           });
}

/// The code point that the glyph list has for a name; none for those that it only keeps.
std::optional<char32_t> listedCodePoint(const QString &name)
{
    static const QHash<QString, QString> codes = [] {
        QHash<QString, QString> byName;
        for (auto each = GlyphList::names().begin(); each != GlyphList::names().end(); ++each)
            byName.insert(each.value(), each.key());
        return byName;
    }();
    const QString code = codes.value(name);
    return code.isEmpty() ? std::nullopt : std::optional<char32_t>(hexStringToInt(code));
}

} // namespace

bool UnicodeChecks::isOfOtherCharacter(const QString &production, const VXGlyphInfo &info)
{
    const QStringList own = info.unicodes();
    const QString stem = production.section(u'.', 0, 0);
    const QStringList written = codePointsInName(stem);
    if (own.isEmpty() || stem.isEmpty() || written.size() > 1)
        return false;
    const std::optional<char32_t> meant =
        written.isEmpty() ? listedCodePoint(stem) : std::optional<char32_t>(hexStringToInt(written.first()));
    return meant && std::none_of(own.begin(), own.end(), [&](const QString &code) {
               return areOneGlyph(*meant, hexStringToInt(code));
           });
}

bool UnicodeChecks::isFontName(std::string_view name)
{
    if (name == ".notdef" || name == ".null")
        return true;
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; };
    return !name.empty() && name.size() <= kLongestFontName && isLetter(name.front())
        && std::all_of(name.begin(), name.end(),
                       [&](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '.'; });
}

QString UnicodeChecks::fontName(const VXGlyphInfo &info)
{
    return info.production().isEmpty() ? info.name() : info.production();
}

ProblemKindSet UnicodeChecks::hintsOf(const VXGlyphInfo &info, std::optional<char32_t> codePoint)
{
    ProblemKindSet hints = 0;
    std::string buffer;
    const std::string production(info.utf8(GlyphField::Production, buffer));
    const std::string_view name = info.utf8(GlyphField::Name, buffer);
    // Of a name that no tool takes, and of one that is too long, other kinds tell.
    const bool isOwnProblem = production.empty()
        && (objectionToName(name) != NameObjection::None || name.size() > kLongestFontName);
    if (!isOwnProblem && !isFontName(production.empty() ? name : std::string_view(production)))
        hints |= setOf(ProblemKind::FontName);
    if (!codePoint)
        return hints;
    const Facts &facts = factsOf(*codePoint);
    if (isOtherCase(info.caseValue(), facts))
        hints |= setOf(ProblemKind::UnicodeCase);
    if (isOtherDirection(info.direction(), facts))
        hints |= setOf(ProblemKind::UnicodeDirection);
    if (isOtherScript(info.utf8(GlyphField::Script, buffer), facts, *codePoint))
        hints |= setOf(ProblemKind::UnicodeScript);
    if (isOtherDescription(info.utf8(GlyphField::Desc, buffer), *codePoint))
        hints |= setOf(ProblemKind::UnicodeDescription);
    std::string code;
    const bool isOwn = production.size() > 3 && production.compare(0, 3, "uni") == 0
        && std::string_view(production).substr(3) == info.unicodeUtf8(code);
    if (!production.empty() && !isOwn && isOfOtherCharacter(QString::fromStdString(production), info))
        hints |= setOf(ProblemKind::UnicodeProduction);
    return hints;
}

} // namespace runebook
