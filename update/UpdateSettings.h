#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<QString> kUpdateFeed("SUFeedURL");
inline const Setting<bool> kChecksForUpdatesAtStart("SUEnableAutomaticChecks");
inline const Setting<QString> kSkippedVersion("SUSkippedVersion");

} // namespace runebook::Settings
