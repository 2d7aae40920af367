#pragma once

#include "model/ComparableValue.h"

#include <QList>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// A field as comparisons show it.
struct ComparedField {
    GlyphField field;
    const char *name; ///< of its captions: "leftLable" + name
};

/// All fields that a file keeps, in the order in which they are shown.
const QList<ComparedField> &comparedFields();
QString titleOf(const ComparedField &field);

/// The fields in which two records differ, all of them: case, legacy code point and old sort name too. Empty
/// and absent count as the same, as in files.
std::vector<const ComparedField *> differingFields(const VXGlyphInfo &left, const VXGlyphInfo &right);

/// Whether a window that compares two records takes them as equal: as VXGlyphInfo::isEqualToInfo() does, with
/// empty and absent as one.
bool countAsEqual(const InfoPtr &left, const InfoPtr &right);

} // namespace runebook
