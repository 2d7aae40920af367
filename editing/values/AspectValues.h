#pragma once

#include "editing/search/FieldAspect.h"

#include <functional>
#include <string_view>

namespace runebook {

/// Calls \a visit with each value that a record has in an aspect, as UTF-8, in their order; some perhaps
/// several times, never an empty one. The same as FieldAspect::values(), sooner; of a very long text that was
/// edited the beginning.
void forEachValue(const FieldAspect &aspect, const VXGlyphInfo &info,
                  const std::function<void(std::string_view)> &visit);

/// Whether a change of \a changed may change the values.
bool concerns(const FieldAspect &aspect, GlyphField changed);

} // namespace runebook
