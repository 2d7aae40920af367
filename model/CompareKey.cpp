#include "model/CompareKey.h"

namespace runebook {

using namespace Qt::StringLiterals;

QString propertyOfKey(CompareKey key)
{
    switch (key) {
    case CompareKey::Unicode:
        return u"unicode"_s;
    case CompareKey::Production:
        return u"production"_s;
    case CompareKey::Name:
        break;
    }
    return u"name"_s;
}

std::optional<CompareKey> compareKeyFromWord(QStringView word)
{
    for (const CompareKey key : {CompareKey::Name, CompareKey::Unicode, CompareKey::Production}) {
        if (word == propertyOfKey(key))
            return key;
    }
    return {};
}

std::string_view keyUtf8(const VXGlyphInfo &info, CompareKey key, std::string &buffer)
{
    if (key == CompareKey::Unicode)
        return info.unicodeUtf8(buffer);
    return info.utf8(key == CompareKey::Production ? GlyphField::Production : GlyphField::Name, buffer);
}

} // namespace runebook
