#pragma once

#include <QMetaType>
#include <QObject>

namespace runebook {

/// A piece of a text: \a location and \a length in UTF-16 units. Converts to and from the list
/// [location, length], which is what scripts hand over.
struct TextRange {
    Q_GADGET
    Q_PROPERTY(int location MEMBER location)
    Q_PROPERTY(int length MEMBER length)
public:
    int location = 0;
    int length = 0;

    /// The first index behind the range.
    int end() const { return location + length; }
    /// True when \a index is one of the range's characters.
    bool contains(int index) const { return index >= location && index < end(); }
    /// The smallest range that covers both.
    TextRange united(TextRange other) const;
    /// What both have in common; empty when that is nothing.
    TextRange intersected(TextRange other) const;
    /// The part of this range that lies in a text of \a textLength units.
    TextRange clampedTo(int textLength) const;

    bool operator==(const TextRange &) const = default;
};

/// Makes the conversion to and from lists known to QVariant. Harmless when called again.
void registerTextRangeConversions();

} // namespace runebook

Q_DECLARE_METATYPE(runebook::TextRange)
