#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<int> kAutosaveDelay("VXAutosaveDelay", 6, {0, 3'600}); ///< seconds without a change
inline const Setting<QVariantList> kPreviewFonts("VXScriptToPreviewFontPath"); ///< of [script, path]

} // namespace runebook::Settings
