#pragma once

#include "platform/ValueTransformer.h"

/// Maps a direction to its place in the direction pop-up (0 not set and vertical ones, 1 LTR, 2 BIDI, 3 RTL
/// are told apart as the pop-up does) and back.
class VXDirectionToIndexValueTransformer final : public runebook::ValueTransformer
{
    Q_GADGET
public:
    QVariant transformedValue(const QVariant &value) const override;
    QVariant reverseTransformedValue(const QVariant &value) const override;
    bool allowsReverseTransformation() const override { return true; }
};
