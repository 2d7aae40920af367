#include "codeeditor/TextRange.h"

#include <QVariant>
#include <algorithm>

namespace runebook {

TextRange TextRange::united(TextRange other) const
{
    const int first = std::min(location, other.location);
    return {first, std::max(end(), other.end()) - first};
}

TextRange TextRange::intersected(TextRange other) const
{
    const int first = std::max(location, other.location);
    return {first, std::max(0, std::min(end(), other.end()) - first)};
}

TextRange TextRange::clampedTo(int textLength) const
{
    const int first = std::clamp(location, 0, textLength);
    // The sum may not fit: a script may ask for "all from here" with the largest number it knows.
    const qint64 last = std::clamp<qint64>(qint64(location) + length, first, textLength);
    return {first, int(last) - first};
}

void registerTextRangeConversions()
{
    if (QMetaType::hasRegisteredConverterFunction<TextRange, QVariantList>())
        return;
    QMetaType::registerConverter<TextRange, QVariantList>([](const TextRange &range) {
        return QVariantList {range.location, range.length};
    });
    QMetaType::registerConverter<QVariantList, TextRange>([](const QVariantList &list) {
        return list.size() == 2 ? TextRange {list[0].toInt(), list[1].toInt()} : TextRange {};
    });
}

} // namespace runebook
