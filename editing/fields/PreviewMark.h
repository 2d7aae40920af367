#pragma once

#include <Qt>

namespace runebook::PreviewMark {

/// What becomes of the value in a cell of a preview.
enum Kind : int { None, Changed, Refused };
/// Under which a model answers it, as a number.
inline constexpr int kRole = Qt::UserRole + 1;

} // namespace runebook::PreviewMark
