#include "model/VXArrayToStringTransformator.h"

#include "model/VXGlyphInfo.h"

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QString nameOf(const QVariant &object)
{
    if (object.canConvert<InfoPtr>()) {
        const auto info = object.value<InfoPtr>();
        return info ? info->name() : QString();
    }
    if (const auto *qobject = object.value<QObject *>())
        return qobject->property("name").toString();
    return object.typeId() == QMetaType::QVariantMap ? object.toMap().value(u"name"_s).toString() : QString();
}

} // namespace

QVariant VXArrayToStringTransformator::transformedValue(const QVariant &value) const
{
    if (value.typeId() == QMetaType::QString)
        return value;
    const QVariantList list = value.toList();
    if (list.isEmpty())
        return u""_s;
    if (list.front().typeId() == QMetaType::QString)
        return value.toStringList().join(kListSeparator);
    QString names = u""_s;
    for (const QVariant &object : list) {
        const QString name = nameOf(object);
        if (!name.isNull())
            names += name + u' ';
    }
    return names;
}

QVariant VXArrayToStringTransformator::reverseTransformedValue(const QVariant &value) const
{
    if (value.typeId() != QMetaType::QString)
        return QStringList();
    return value.toString().split(kListSeparator);
}
