#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<QString> kReplaceSearch("FindAndReplaceSearch");
inline const Setting<QString> kReplaceBy("FindAndReplaceReplace");
inline const Setting<int> kReplaceField("FindAndReplaceField"); ///< a tag of FindReplace

} // namespace runebook::Settings
