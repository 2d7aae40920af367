#include "model/UnicodeScripts.h"

#include <algorithm>
#include <array>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Scripts as Unicode, records and names with a suffix have them. The others end in their first four letters.
struct Script {
    QLatin1StringView unicode, word, suffix;
    bool isRightToLeft = false;
};

constexpr std::array kScripts {
    Script {"Latin"_L1, "latin"_L1, ""_L1},
    Script {"Greek"_L1, "greek"_L1, "gr"_L1},
    Script {"Cyrillic"_L1, "cyrillic"_L1, "cy"_L1},
    Script {"Arabic"_L1, "arabic"_L1, "ar"_L1, true},
    Script {"Hebrew"_L1, "hebrew"_L1, "hb"_L1, true},
    Script {"Hangul"_L1, "hangul"_L1, "ko"_L1},
    Script {"Devanagari"_L1, "devanagari"_L1, "deva"_L1},
    Script {"Han"_L1, "han"_L1, "hani"_L1},
    Script {"Hiragana"_L1, "hiragana"_L1, "hira"_L1},
    Script {"Katakana"_L1, "katakana"_L1, "kata"_L1},
    Script {"Oriya"_L1, "oriya"_L1, "orya"_L1},
    Script {"Malayalam"_L1, "malayalam"_L1, "mlym"_L1},
    Script {"Kannada"_L1, "kannada"_L1, "knda"_L1},
    Script {"Tamil"_L1, "tamil"_L1, "taml"_L1},
    Script {"Gurmukhi"_L1, "gurmukhi"_L1, "guru"_L1},
    Script {"Thai"_L1, "thai"_L1, "thai"_L1},
    Script {"Myanmar"_L1, "myanmar"_L1, "mymr"_L1},
    Script {"Khmer"_L1, "khmer"_L1, "khmr"_L1},
    Script {"Lao"_L1, "lao"_L1, "laoo"_L1},
    Script {"Armenian"_L1, "armenian"_L1, "armn"_L1},
    Script {"Georgian"_L1, "georgian"_L1, "geor"_L1},
    Script {"Tifinagh"_L1, "tifinagh"_L1, "tfng"_L1},
    Script {"Adlam"_L1, "adlam"_L1, "adlm"_L1, true},
    Script {"Bengali"_L1, "bengali"_L1, "beng"_L1},
    Script {"Bopomofo"_L1, "bopomofo"_L1, "bopo"_L1},
    Script {"Cherokee"_L1, "cherokee"_L1, "cher"_L1},
    Script {"Ethiopic"_L1, "ethiopic"_L1, "ethi"_L1},
    Script {"Gothic"_L1, "gothic"_L1, "goth"_L1},
    Script {"Gujarati"_L1, "gujarati"_L1, "gujr"_L1},
    Script {"Kayah_Li"_L1, "kayahli"_L1, "kali"_L1},
    Script {"Lepcha"_L1, "lepcha"_L1, "lepc"_L1},
    Script {"Mandaic"_L1, "mandaic"_L1, "mand"_L1, true},
    Script {"Mongolian"_L1, "mongolian"_L1, "mong"_L1},
    Script {"Nko"_L1, "nko"_L1, "nkoo"_L1, true},
    Script {"Pahawh_Hmong"_L1, "pahawh hmong"_L1, "hmng"_L1},
    Script {"Samaritan"_L1, "samaritan"_L1, "samr"_L1, true},
    Script {"Sinhala"_L1, "sinhala"_L1, "sinh"_L1},
    Script {"Syriac"_L1, "syriac"_L1, "syrc"_L1, true},
    Script {"Telugu"_L1, "telugu"_L1, "telu"_L1},
    Script {"Tibetan"_L1, "tibet"_L1, "tibt"_L1},
    Script {"Yi"_L1, "yi"_L1, "yiii"_L1},
    Script {"Common"_L1, ""_L1, ""_L1},
    Script {"Inherited"_L1, ""_L1, ""_L1},
};

const Script *scriptNamed(const QString &unicodeScript)
{
    const auto found = std::find_if(kScripts.begin(), kScripts.end(),
                                    [&](const Script &script) { return script.unicode == unicodeScript; });
    return found != kScripts.end() ? &*found : nullptr;
}

} // namespace

QString scriptWord(const QString &unicodeScript)
{
    const Script *script = scriptNamed(unicodeScript);
    return script && !script->word.isEmpty() ? QString(script->word) : QString();
}

bool hasNoScript(const QString &unicodeScript)
{
    const Script *script = scriptNamed(unicodeScript);
    return script && script->word.isEmpty();
}

QString nameSuffix(const QString &unicodeScript)
{
    const Script *script = scriptNamed(unicodeScript);
    return script ? QString(script->suffix) : unicodeScript.left(4).toLower();
}

bool isRightToLeft(const QString &unicodeScript)
{
    const Script *script = scriptNamed(unicodeScript);
    return script && script->isRightToLeft;
}

QString scriptOfBlock(const QString &block)
{
    const auto found = std::find_if(kScripts.begin(), kScripts.end(), [&](const Script &script) {
        return !script.word.isEmpty() && script.word != "latin"_L1 && block.startsWith(script.unicode);
    });
    return found != kScripts.end() ? QString(found->unicode) : QString();
}

} // namespace runebook
