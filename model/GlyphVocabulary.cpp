// The fixed words that go with a record: vocabularies, the word forms of case and direction, the glyph list.
#include "model/FieldWords.h"
#include "model/VXGlyphInfo.h"
#include "platform/StandardFolders.h"

#include <QFile>
#include <QSet>

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

namespace {

QHash<QString, QString> loadGlyphList()
{
    QHash<QString, QString> names;
    QFile file(StandardFolders::resource(u"aglfn1.6.txt"_s));
    if (!file.open(QIODevice::ReadOnly))
        return names;
    const QString text = QString::fromLatin1(file.readAll());
    for (const QStringView line : QStringView(text).split(u'\n')) {
        const QList<QStringView> parts = line.trimmed().split(u';');
        if (parts.size() >= 2 && !line.startsWith(u'#'))
            names.insert(parts.at(0).toString(), parts.at(1).toString());
    }
    return names;
}

} // namespace

const QHash<QString, QString> &VXGlyphInfo::aglfn()
{
    static const QHash<QString, QString> names = loadGlyphList();
    return names;
}

bool VXGlyphInfo::isIgnoredGlyphListName(QStringView name)
{
    static const QSet<QString> ignored {u"Tcommaaccent"_s, u"tcommaaccent"_s, u"sigma1"_s,        u"theta1"_s,
                                        u"Upsilon1"_s,     u"phi1"_s,         u"omega1"_s,        u"aleph"_s,
                                        u"Ifraktur"_s,     u"Rfraktur"_s,     u"perpendicular"_s, u"H22073"_s,
                                        u"H18543"_s,       u"H18551"_s,       u"H18533"_s};
    return ignored.contains(name.toString());
}
