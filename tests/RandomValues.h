#pragma once

#include "model/VXGlyphInfo.h"

#include <QRandomGenerator>

// Records with values of every kind, for tests of what becomes of them.

namespace runebook {

using namespace Qt::StringLiterals;

inline const QStringList kKeys {
    u"name"_s,     u"category"_s, u"subCategory"_s, u"marks"_s,     u"anchors"_s,      u"unicodeLegacy"_s,
    u"unicodes"_s, u"script"_s,   u"production"_s,  u"sortName"_s,  u"sortNameKeep"_s, u"sortNameOld"_s,
    u"altNames"_s, u"desc"_s,     u"decompose"_s,   u"direction"_s, u"case"_s};

/// All values of a record; absent and empty ones are the same in a file.
inline QVariantList valuesOf(const VXGlyphInfo &info)
{
    QVariantList values;
    for (const QString &key : kKeys) {
        const QVariant value = info.valueForKey(key);
        const bool isList = value.typeId() == QMetaType::QStringList;
        values << (isList ? QVariant(value.toStringList() == QStringList(u""_s) ? QStringList()
                                                                                : value.toStringList())
                       : value.typeId() == QMetaType::QString ? QVariant(value.toString() + u""_s)
                                                              : value);
    }
    return values;
}

/// Values with characters of every kind.
class Dice
{
public:
    explicit Dice(quint32 seed) : m_random(seed) { }
    int below(int end) { return m_random.bounded(end); }
    QString text()
    {
        static const QStringList pieces = u"a|B7| |\"|\n|\r|\t|\x1B|é|字|𝔸|e\u0301|<!--|-->|<|/>|&amp;|'|=|, "
                                          u"|\u2028|\u0085|\uFEFF|\u00A0|0041"
                                          "|\n\t<glyph name=\"x\" />"_s.split(u'|')
            << QChar(0) << QChar(0xD835) << QChar(0xDC38) << QString(40, u'字');
        QString made;
        for (int i = below(4); i > 0; --i) // mostly harmless ones, so that all outcomes occur
            made += pieces.at(below(3) ? below(3) : below(int(pieces.size())));
        return made;
    }
    /// Gives a few fields of \a info values.
    void change(VXGlyphInfo &info)
    {
        for (int i = below(4); i >= 0; --i) {
            const QString &key = kKeys.at(below(int(kKeys.size())));
            if (key == "direction"_L1 || key == "case"_L1)
                info.setValueForKey(below(6) - (key == "direction"_L1 ? 2 : 0), key);
            else if (key == "unicodes"_L1 || key == "altNames"_L1)
                info.setValueForKey(QStringList {text(), text(), text()}.first(below(4)), key);
            else
                info.setValueForKey(text(), key);
        }
    }

private:
    QRandomGenerator m_random;
};

} // namespace runebook
