#include "scripting/classes/FontMaps.h"

#include "scripting/bridge/BridgeTypes.h"

#include <QColor>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

PyObject *fontToPython(QMetaType, const void *data)
{
    const QVariantMap map = mapOfFont(*static_cast<const QFont *>(data));
    const QMetaType type(QMetaType::QVariantMap);
    return bridgeType(type).toPython(type, &map);
}

bool fontFromPython(QMetaType, PyObject *object, void *data)
{
    QVariantMap map;
    const QMetaType type(QMetaType::QVariantMap);
    if (!bridgeType(type).fromPython(type, object, &map))
        return false;
    *static_cast<QFont *>(data) = fontOfMap(map);
    return true;
}

bool isFontName(const QString &name)
{
    return name == "NSFont"_L1 || name == "font"_L1;
}

bool isColorName(const QString &name)
{
    return name == "NSColor"_L1 || name.startsWith("VXForegroundColor"_L1) || name.endsWith("Color"_L1);
}

} // namespace

QVariantMap mapOfFont(const QFont &font)
{
    return {{u"name"_s, font.family()},
            {u"size"_s, font.pointSizeF()},
            {u"bold"_s, font.bold()},
            {u"italic"_s, font.italic()}};
}

QFont fontOfMap(const QVariantMap &map)
{
    QFont font;
    if (map.contains(u"name"_s))
        font.setFamily(map[u"name"_s].toString());
    if (const double size = map[u"size"_s].toDouble(); size > 0)
        font.setPointSizeF(size);
    font.setBold(map[u"bold"_s].toBool());
    font.setItalic(map[u"italic"_s].toBool());
    return font;
}

QVariant withFontsAndColors(const QString &name, const QVariant &value)
{
    if (value.typeId() == QMetaType::QVariantMap) {
        QVariantMap map = value.toMap();
        if (isFontName(name))
            return fontOfMap(map);
        for (auto item = map.begin(); item != map.end(); ++item)
            *item = withFontsAndColors(item.key(), *item);
        return map;
    }
    if (isColorName(name) && value.typeId() == QMetaType::QString) {
        if (const QColor color(value.toString()); color.isValid())
            return color;
        throw std::invalid_argument("that is no colour");
    }
    return value;
}

void registerFonts()
{
    registerType(QMetaType(QMetaType::QFont), {fontToPython, fontFromPython});
}

} // namespace runebook::bridge
