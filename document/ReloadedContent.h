#pragma once

#include "model/VXGlyphInfo.h"

namespace runebook {

/// For each of \a fresh the record of \a former that it is a newer state of, or null: the one with its name
/// (of several of one name the first with the first, and so on), else the only one with its code point. None
/// of \a former twice. Linear.
InfoList formerRecords(const InfoList &former, const InfoList &fresh);

} // namespace runebook
