#include "model/VXDirectionToIndexValueTransformer.h"

#include "model/VXGlyphInfo.h"

QVariant VXDirectionToIndexValueTransformer::transformedValue(const QVariant &value) const
{
    if (!value.isValid())
        return 0;
    switch (value.toInt()) {
    case VXGlyphInfo::BIDI:
        return 2;
    case VXGlyphInfo::LTR:
        return 1;
    case VXGlyphInfo::RTL:
        return 3;
    default:
        return 0;
    }
}

QVariant VXDirectionToIndexValueTransformer::reverseTransformedValue(const QVariant &value) const
{
    switch (value.toInt()) {
    case 2:
        return static_cast<int>(VXGlyphInfo::BIDI);
    case 3:
        return static_cast<int>(VXGlyphInfo::RTL);
    default:
        return static_cast<int>(VXGlyphInfo::LTR);
    }
}
