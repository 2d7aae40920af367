// The fixed words that go with a record: vocabularies, and the word forms of case and direction.
#include "model/FieldWords.h"
#include "model/GlyphList.h"
#include "model/VXGlyphInfo.h"

using namespace runebook;
using namespace Qt::StringLiterals;

QStringList VXGlyphInfo::categories()
{
    return categoryWords();
}

QStringList VXGlyphInfo::subCategories()
{
    return subCategoryWords();
}

QStringList VXGlyphInfo::scripts()
{
    return scriptWords();
}

QString VXGlyphInfo::stringFromCase(int letterCase)
{
    switch (letterCase) {
    case upper:
        return u"upper"_s;
    case lower:
        return u"lower"_s;
    case smallCaps:
        return u"smallCaps"_s;
    case minor:
        return u"minor"_s;
    default:
        return {};
    }
}

int VXGlyphInfo::caseFromString(const QString &text)
{
    switch (text.isEmpty() ? 0 : text.front().unicode()) {
    case u'l':
        return lower;
    case u'm':
        return minor;
    case u'o':
        return other;
    case u's':
        return smallCaps;
    case u'u':
        return upper;
    default:
        return noCase;
    }
}

QString VXGlyphInfo::stringFromDirection(int direction)
{
    switch (direction) {
    case BIDI:
        return u"BIDI"_s;
    case LTR:
        return u"LTR"_s;
    case RTL:
        return u"RTL"_s;
    case VTL:
        return u"VTL"_s;
    case VTR:
        return u"VTR"_s;
    default:
        return {};
    }
}

int VXGlyphInfo::directionFromString(const QString &text)
{
    if (text.startsWith(u'B'))
        return BIDI;
    if (text.startsWith(u'R'))
        return RTL;
    if (text.startsWith(u'V') && text.size() == 3)
        return text.at(2) == u'L' ? VTL : VTR;
    return LTR;
}

const QHash<QString, QString> &VXGlyphInfo::aglfn()
{
    return GlyphList::names();
}

bool VXGlyphInfo::isIgnoredGlyphListName(QStringView name)
{
    return GlyphList::isIgnored(name);
}
