#include "model/GlyphList.h"

#include "platform/StandardFolders.h"

#include <QFile>
#include <QSet>

using namespace Qt::StringLiterals;

namespace runebook {

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

const QHash<QString, QString> &GlyphList::names()
{
    static const QHash<QString, QString> names = loadGlyphList();
    return names;
}

bool GlyphList::isIgnored(QStringView name)
{
    static const QSet<QString> ignored {u"Tcommaaccent"_s, u"tcommaaccent"_s, u"sigma1"_s,        u"theta1"_s,
                                        u"Upsilon1"_s,     u"phi1"_s,         u"omega1"_s,        u"aleph"_s,
                                        u"Ifraktur"_s,     u"Rfraktur"_s,     u"perpendicular"_s, u"H22073"_s,
                                        u"H18543"_s,       u"H18551"_s,       u"H18533"_s};
    return ignored.contains(name.toString());
}

} // namespace runebook
