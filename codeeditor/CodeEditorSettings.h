#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

// Read once in a run. Either both are set, of the same length, or the usual ones hold.
inline const Setting<QString> kOpeningBraces("TEOpeningBracesCharacters");
inline const Setting<QString> kClosingBraces("TEClosingBracesCharacters");

} // namespace runebook::Settings
