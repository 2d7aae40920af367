#pragma once

#include "platform/ValueTransformer.h"

/// Shows a list as one text.
class VXArrayToStringTransformator final : public runebook::ValueTransformer
{
    Q_GADGET
public:
    /// Texts are joined with ", "; of other objects the names, each followed by a blank. Anything but a
    /// list or a text gives "".
    QVariant transformedValue(const QVariant &value) const override;
    /// A text split at ", "; anything else gives an empty list.
    QVariant reverseTransformedValue(const QVariant &value) const override;
    bool allowsReverseTransformation() const override { return false; }
};
