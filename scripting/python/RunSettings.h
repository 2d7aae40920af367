#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<int> kAfterFailedRun("VXAfterFailedRun"); ///< a RunQuestion::Answer

} // namespace runebook::Settings
