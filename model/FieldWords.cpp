#include "model/FieldWords.h"

namespace runebook {

using namespace Qt::StringLiterals;

QStringList categoryWords()
{
    static const QStringList words {u"Letter"_s,    u"Number"_s, u"Punctuation"_s,
                                    u"Separator"_s, u"Symbol"_s, u"Mark"_s};
    return words;
}

QStringList subCategoryWords()
{
    static const QStringList words =
        u"Uppercase|Lowercase|Other|Nonspacing|Spacing|Arrow|Compatibility|Currency|Dash|"
        "Decimal Digit|Digital Digit|Enclosing|Format|Fraction|Geometry|Halfform|Jamo|"
        "Letter|Ligature|Math|Matra|Modifier|Nonspace|Parenthesis|Quote|Radical|Small|"
        "Smallcaps|Space|Spacing Combining|Superscript|Syllable"_s.split(u'|');
    return words;
}

QStringList scriptWords()
{
    static const QStringList words =
        u"latin|cyrillic|greek|arabic|han|kana|oriya|malayalam|kannada|tamil|gurmukhi|"
        "thai|myanmar|khmer|lao|armenian|georgian|tifinagh|Black Letter|adlam|bengali|"
        "bopomofo|cherokee|devanagari|ethiopic|gothic|gujarati|hangul|hebrew|hiragana|"
        "katakana|kayahli|lepcha|mandaic|math|mongolian|musical|nko|pahawh hmong|"
        "phaistosDisc|roman|samaritan|sinhala|syriac|telugu|tibet|yi"_s.split(u'|');
    return words;
}

QStringList caseWords()
{
    static const QStringList words {u"upper"_s, u"lower"_s, u"smallCaps"_s, u"minor"_s, u"other"_s};
    return words;
}

QStringList directionWords()
{
    static const QStringList words {u"BIDI"_s, u"LTR"_s, u"RTL"_s, u"VTL"_s, u"VTR"_s};
    return words;
}

} // namespace runebook
