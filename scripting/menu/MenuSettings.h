#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<QString> kPythonLibrary("VXPythonFrameworkPath"); ///< nothing: the newest supported one
inline const Setting<bool> kKeepsStandardStreams("VXUseConsoleForScriptOutput");
inline const Setting<QString> kLastScript("runAgainScriptName"); ///< its key in the menu

} // namespace runebook::Settings
