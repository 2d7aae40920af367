#include "model/CharacterNames.h"

#include "model/GlyphList.h"
#include "model/NameRules.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"
#include "model/UnicodeScripts.h"

#include <QSet>
#include <QStringList>
#include <algorithm>
#include <array>
#include <span>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Short {
    char32_t codePoint;
    QLatin1StringView name;
};

/// The marks as they end the names of letters with them.
constexpr std::array kMarks {
    Short {0x300, "grave"_L1}, Short {0x301, "acute"_L1}, Short {0x302, "circumflex"_L1}, Short {0x303, "tilde"_L1},
    Short {0x304, "macron"_L1}, Short {0x305, "overline"_L1}, Short {0x306, "breve"_L1}, Short {0x307, "dotaccent"_L1},
    Short {0x308, "dieresis"_L1}, Short {0x309, "hookabove"_L1}, Short {0x30A, "ring"_L1},
    Short {0x30B, "hungarumlaut"_L1}, Short {0x30C, "caron"_L1}, Short {0x30D, "verticallineabove"_L1},
    Short {0x30E, "dblverticallineabove"_L1}, Short {0x30F, "dblgrave"_L1}, Short {0x310, "candraBindu"_L1},
    Short {0x311, "invertedbreve"_L1}, Short {0x312, "commaturnedabove"_L1}, Short {0x313, "commaabove"_L1},
    Short {0x314, "commareversedabove"_L1}, Short {0x315, "commaaboveright"_L1}, Short {0x31B, "horn"_L1},
    Short {0x323, "dotbelow"_L1}, Short {0x324, "dieresisbelow"_L1}, Short {0x325, "ringbelow"_L1},
    Short {0x326, "commaaccent"_L1}, Short {0x327, "cedilla"_L1}, Short {0x328, "ogonek"_L1},
    Short {0x32C, "caronbelow"_L1}, Short {0x32D, "circumflexbelow"_L1}, Short {0x32E, "brevebelow"_L1},
    Short {0x32F, "breveinvertedbelow"_L1}, Short {0x330, "tildebelow"_L1}, Short {0x331, "macronbelow"_L1},
    Short {0x332, "lowline"_L1}, Short {0x333, "dbllowline"_L1}, Short {0x334, "tildeoverlay"_L1},
    Short {0x342, "perispomeni"_L1}, Short {0x345, "ypogegrammeni"_L1},
};

/// Letters that are not called after their title.
constexpr std::array kUsual {
    Short {0x0D, "CR"_L1}, Short {0xA0, "nbspace"_L1}, Short {0xAD, "softhyphen"_L1}, Short {0x237, "dotlessj"_L1},
    Short {0x2126, "Ohm"_L1}, Short {0x3C2, "sigmafinal"_L1}, Short {0x418, "Ii-cy"_L1}, Short {0x438, "ii-cy"_L1}, Short {0x419, "Iishort-cy"_L1},
    Short {0x439, "iishort-cy"_L1}, Short {0x42D, "Ereversed-cy"_L1}, Short {0x44D, "ereversed-cy"_L1},
    Short {0x404, "E-cy"_L1}, Short {0x454, "e-cy"_L1}, Short {0x406, "I-cy"_L1}, Short {0x456, "i-cy"_L1},
    Short {0x94D, "halant-deva"_L1},
};

QString shortName(std::span<const Short> list, char32_t codePoint)
{
    const auto found = std::find_if(list.begin(), list.end(), [&](const Short &each) { return each.codePoint == codePoint; });
    return found != list.end() ? QString(found->name) : QString();
}

QString uniName(char32_t codePoint)
{
    return (codePoint < 0x10000 ? "uni"_L1 : "u"_L1) + hexStringFromInt(codePoint);
}

QString listedName(char32_t codePoint)
{
    const QString name = GlyphList::names().value(hexStringFromInt(codePoint));
    const bool isUsual = !name.startsWith("afii"_L1) && !name.startsWith("SF"_L1) && !GlyphList::isIgnored(name);
    return isUsual ? name : QString();
}

QString suffixed(const QString &name, const QString &suffix)
{
    return suffix.isEmpty() ? name : name + u'-' + suffix;
}

QString capitalised(const QString &word)
{
    return word.left(1).toUpper() + word.mid(1);
}

/// Words of a character's name on their way to a glyph's.
class Title
{
public:
    explicit Title(QString name)
        : m_words(name.replace(u'-', u' ').toLower().split(u' ', Qt::SkipEmptyParts))
    {
    }
    /// Takes \a words away where they begin the title; whether they did.
    bool takeBeginning(const QString &words)
    {
        const QStringList beginning = words.split(u' ');
        if (m_words.size() <= beginning.size() || m_words.sliced(0, beginning.size()) != beginning)
            return false;
        m_words.remove(0, beginning.size());
        return true;
    }
    void drop(std::initializer_list<QLatin1StringView> words)
    {
        m_words.removeIf([&](const QString &word) {
            return std::any_of(words.begin(), words.end(), [&](QLatin1StringView each) { return each == word; });
        });
    }
    void dropLast(std::initializer_list<QLatin1StringView> words)
    {
        const auto isLast = [this](QLatin1StringView each) { return m_words.size() > 1 && m_words.last() == each; };
        if (std::any_of(words.begin(), words.end(), isLast))
            m_words.removeLast();
    }
    void replace(const QString &word, const QString &other) { m_words.replaceInStrings(word, other); }
    /// Adjectives go behind the first noun: "reversed e" is sought by the letter.
    void putBehind(std::initializer_list<QLatin1StringView> adjectives)
    {
        qsizetype count = 0;
        while (count + 1 < m_words.size()
               && std::any_of(adjectives.begin(), adjectives.end(),
                              [&](QLatin1StringView each) { return each == m_words.at(count); }))
            ++count;
        if (count > 0)
            m_words.insert(0, m_words.takeAt(count));
    }
    void replaceFirst(const QString &word) { m_words.first() = word; }
    QString takeLast() { return m_words.isEmpty() ? QString() : m_words.takeLast(); }
    bool contains(const QString &word) const { return m_words.contains(word); }
    QString first() const { return m_words.value(0); }
    bool isEmpty() const { return m_words.isEmpty(); }
    QString joined() const { return m_words.join(QString()); }
    QString camelCase() const
    {
        QString name = first();
        for (const QString &word : m_words.mid(1))
            name += capitalised(word);
        return name;
    }

private:
    QStringList m_words;
};

constexpr std::initializer_list<QLatin1StringView> kAdjectives {
    "reversed"_L1, "turned"_L1, "open"_L1, "short"_L1, "barred"_L1, "straight"_L1, "bashkir"_L1, "abkhasian"_L1,
    "khakassian"_L1, "archaic"_L1, "lunate"_L1, "dotless"_L1, "farsi"_L1, "final"_L1, "vocalic"_L1, "candra"_L1,
    "marwari"_L1, "heavy"_L1, "african"_L1, "kirghiz"_L1, "triple"_L1, "double"_L1, "indian"_L1, "turkish"_L1, "pamphylian"_L1, "sideways"_L1, "inverted"_L1};

/// Names of Greek letters, as letters of another alphabet have them too.
bool isGreekWord(const QString &word)
{
    static const QSet<QString> words {u"alpha"_s, u"beta"_s, u"gamma"_s, u"delta"_s, u"theta"_s, u"iota"_s,
                                      u"lambda"_s, u"upsilon"_s, u"phi"_s, u"chi"_s, u"omega"_s, u"rho"_s};
    return words.contains(word);
}

QString latinName(Title title, bool isCapital)
{
    const bool isModifier = title.takeBeginning(u"modifier letter"_s);
    title.takeBeginning(u"latin"_s);
    const bool isLigature = title.contains(u"ligature"_s);
    const bool isSmallCapital = title.takeBeginning(u"letter small capital"_s);
    title.drop({"letter"_L1, "capital"_L1, "small"_L1, "with"_L1, "and"_L1, "ligature"_L1});
    title.replace(u"diaeresis"_s, u"dieresis"_s);
    title.putBehind(kAdjectives);
    QString name = title.joined();
    name.replace("lefthook"_L1, "hookleft"_L1).replace("rightthook"_L1, "hookright"_L1);
    if (isGreekWord(title.first()))
        name += "-latin"_L1;
    if (isCapital)
        name = isLigature ? name.toUpper() : capitalised(name);
    return name + (isModifier ? "mod"_L1 : isSmallCapital ? "smallcapital"_L1 : ""_L1);
}

/// Cyrillic, Greek, Armenian and others with capitals; the words are joined.
QString bicameralName(Title title, bool isCapital, const QString &script)
{
    const bool isSymbol = title.contains(u"symbol"_s);
    title.drop({"capital"_L1, "small"_L1, "letter"_L1, "with"_L1, "and"_L1, "ligature"_L1});
    title.replace(u"diaeresis"_s, u"dieresis"_s);
    title.putBehind(kAdjectives);
    if (script == "Cyrillic"_L1 && (title.first() == "i"_L1 || title.first() == "e"_L1))
        title.replaceFirst(title.first() == "i"_L1 ? u"ii"_s : u"ereversed"_s);
    QString name = isSymbol ? title.camelCase() : title.joined();
    name.replace("doubleacute"_L1, "hungarumlaut"_L1);
    return suffixed(isCapital ? capitalised(name) : name, nameSuffix(script));
}

/// Scripts without capitals. What tells the kind of a letter goes behind it or is left out.
QString unicameralName(Title title, const QString &suffix)
{
    const bool isVowelSign = title.takeBeginning(u"vowel sign"_s);
    const bool isFarsiDigit = title.takeBeginning(u"extended arabic indic"_s);
    title.takeBeginning(u"indic"_s);
    for (const QString &kind : {u"letter"_s, u"stress sign"_s, u"sign"_s, u"digit"_s, u"syllable"_s, u"mark"_s, u"point"_s, u"character"_s})
        title.takeBeginning(kind);
    title.putBehind(kAdjectives);
    title.dropLast({"mark"_L1, "sign"_L1});
    QString name;
    if (title.contains(u"with"_s)) {
        title.drop({"and"_L1});
        const QStringList parts = title.camelCase().split("With"_L1);
        name = parts.first();
        for (const QString &part : parts.mid(1))
            name += capitalised(part.toLower());
    } else {
        name = title.camelCase();
    }
    return suffixed(name + (isVowelSign ? "Matra"_L1 : isFarsiDigit ? "Farsi"_L1 : ""_L1), suffix);
}

QString hangulName(char32_t codePoint, Title title)
{
    title.takeBeginning(u"hangul"_s);
    if (codePoint >= 0xAC00) {
        title.takeBeginning(u"syllable"_s);
        return title.joined() + "-ko"_L1;
    }
    for (const auto &[words, end] : {std::pair(u"choseong"_s, u"cho"_s), {u"jungseong"_s, u"jung"_s},
                                     {u"jongseong"_s, u"jong"_s}}) {
        if (title.takeBeginning(words))
            return title.joined() + end + "-ko"_L1;
    }
    title.takeBeginning(u"letter"_s);
    return title.joined() + "-ko"_L1;
}

QString mathName(Title title)
{
    title.takeBeginning(u"mathematical"_s);
    const bool isCapital = title.contains(u"capital"_s);
    title.drop({"capital"_L1, "small"_L1, "digit"_L1});
    const QString letter = title.takeLast();
    return (isCapital ? capitalised(letter) : letter) + title.joined() + "-math"_L1;
}

/// What is sought by what it is comes first: "left ceiling" becomes "ceilingleft".
QString parenthesisName(Title title)
{
    const QString side = title.contains(u"left"_s) ? u"left"_s : title.contains(u"right"_s) ? u"right"_s : QString();
    title.drop({"left"_L1, "right"_L1, "mathematical"_L1, "with"_L1});
    return title.joined() + side;
}

QString symbolName(Title title, const QString &category, const QString &block)
{
    if (category == "Ps"_L1 || category == "Pe"_L1)
        return parenthesisName(title);
    title.drop({"sign"_L1, "vulgar"_L1, "fraction"_L1});
    if (category == "Sm"_L1)
        title.drop({"to"_L1, "than"_L1});
    if (title.takeBeginning(u"circled digit"_s))
        return title.joined() + "circle"_L1;
    if (title.takeBeginning(u"superscript"_s))
        return title.joined() + "superior"_L1;
    if (title.takeBeginning(u"subscript"_s))
        return title.joined() + "inferior"_L1;
    if (title.takeBeginning(u"combining"_s))
        return title.joined() + "comb"_L1;
    if (title.takeBeginning(u"modifier letter"_s))
        return title.joined() + "mod"_L1;
    title.replace(u"drawings"_s, QString());
    title.replace(u"circled"_s, u"circle"_s);
    if (category != "So"_L1)
        title.putBehind(kAdjectives);
    const bool isPicture = category == "So"_L1 || block == "Geometric Shapes"_L1;
    const QString name = isPicture ? title.camelCase() : title.joined();
    return QString(name).replace("nobreakspace"_L1, "nbspace"_L1);
}

QString romanName(Title title)
{
    const bool isSmall = title.takeBeginning(u"small"_s);
    title.takeBeginning(u"roman numeral"_s);
    return (isSmall ? title.joined() : capitalised(title.joined())) + "-roman"_L1;
}

QString nameByTitle(char32_t codePoint)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString category = data.category(codePoint);
    const QString block = data.block(codePoint);
    Title title(data.name(codePoint));
    if (block.startsWith("Mathematical Alphanumeric"_L1))
        return mathName(title);
    if (title.contains(u"roman"_s) && title.contains(u"numeral"_s))
        return romanName(title);
    if (title.takeBeginning(u"musical symbol"_s))
        return title.camelCase() + "-musical"_L1;
    QString script = data.script(codePoint);
    if (hasNoScript(script))
        script = scriptOfBlock(block);
    if (category == "Cf"_L1 || block == "Letterlike Symbols"_L1)
        script.clear();
    if (script == "Latin"_L1)
        return latinName(title, category == "Lu"_L1);
    if (script == "Hangul"_L1)
        return hangulName(codePoint, title);
    if (script.isEmpty() || category.startsWith(u'S'))
        return suffixed(symbolName(title, category, block), nameSuffix(script));
    title.takeBeginning(QString(script).replace(u'_', u' ').toLower());
    if (data.upper(codePoint) != codePoint || data.lower(codePoint) != codePoint || script == "Greek"_L1)
        return bicameralName(title, category == "Lu"_L1, script);
    if (category.startsWith(u'M') && isRightToLeft(script))
        return suffixed(title.joined(), nameSuffix(script));
    return unicameralName(title, nameSuffix(script));
}

/// After the record of the base: "Abreve" and "acutecomb" make "Abreveacute".
QString nameByParts(char32_t codePoint, const NameOfCharacter &nameOf)
{
    const UnicodeData &data = UnicodeData::shared();
    const QString script = data.script(codePoint);
    const std::vector<char32_t> parts = data.decomposition(codePoint).parts;
    const QString tag = data.decomposition(codePoint).tag;
    if (parts.size() != 2 || data.category(codePoint) == "Nl"_L1 || !(script == "Latin"_L1 || script == "Greek"_L1))
        return {};
    const auto nameOfPart = [&nameOf](char32_t part) {
        const QString present = nameOf ? nameOf(part) : QString();
        return present.isEmpty() ? proposedName(part, nameOf) : present;
    };
    QString base = nameOfPart(parts[0]);
    if (tag == "<compat>"_L1 && data.category(parts[0]).startsWith(u'L') && data.script(parts[1]) == "Latin"_L1)
        return base + nameOfPart(parts[1]); // two letters in one: "Dzcaron"
    if (!tag.isEmpty())
        return {};
    QString mark = shortName(kMarks, parts[1]);
    if (script == "Latin"_L1 && data.name(codePoint).contains("LINE BELOW"_L1))
        mark = u"linebelow"_s;
    if (hasCommaForCedilla(codePoint))
        mark = u"commaaccent"_s;
    constexpr auto kDotBelow = "dotbelow"_L1; // last in Vietnamese letters
    if (base.endsWith(kDotBelow) && (mark == "circumflex"_L1 || mark == "breve"_L1)) {
        base.chop(kDotBelow.size());
        mark += kDotBelow;
    }
    if (mark.isEmpty() || base.isEmpty() || base.startsWith("uni"_L1))
        return {};
    const qsizetype end = base.contains(u'-') ? base.indexOf(u'-') : base.size();
    return base.left(end) + mark + base.mid(end);
}

/// Whether the glyph list has \a name for another character.
bool isListedForOther(const QString &name, char32_t codePoint)
{
    static const QHash<QString, QString> codes = [] {
        QHash<QString, QString> byName;
        for (auto each = GlyphList::names().begin(); each != GlyphList::names().end(); ++each)
            byName.insert(each.value(), each.key());
        return byName;
    }();
    const QString code = GlyphList::isIgnored(name) ? QString() : codes.value(name);
    return !code.isEmpty() && code != hexStringFromInt(codePoint);
}

} // namespace

bool hasCommaForCedilla(char32_t codePoint)
{
    const char32_t small = UnicodeData::shared().lower(codePoint);
    return small == 0x123 || small == 0x137 || small == 0x13C || small == 0x146 || small == 0x157 || small == 0x1E11;
}

QString proposedName(char32_t codePoint, const NameOfCharacter &nameOf)
{
    const UnicodeData &data = UnicodeData::shared();
    if (!data.isAssigned(codePoint))
        return {};
    if (const QString usual = shortName(kUsual, codePoint); !usual.isEmpty())
        return usual;
    if (const QString listed = listedName(codePoint); !listed.isEmpty())
        return listed;
    if (const QString mark = shortName(kMarks, codePoint); !mark.isEmpty())
        return mark + "comb"_L1;
    const QString title = data.name(codePoint);
    const bool isNumbered = title.isEmpty() || title.endsWith(u'-' + hexStringFromInt(codePoint));
    QString name = isNumbered ? QString() : nameByParts(codePoint, nameOf);
    if (name.isEmpty() && !isNumbered)
        name = nameByTitle(codePoint);
    constexpr qsizetype kLongest = 50; // beyond, nobody reads them
    const bool isUsable = objectionToName(QStringView(name)) == NameObjection::None && name.size() <= kLongest
        && !isListedForOther(name, codePoint);
    return isUsable ? name : uniName(codePoint);
}

} // namespace runebook
