#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<bool> kRestoresWindows("VXRestoreWindows");
inline const Setting<QVariantList> kOpenWindows("VXOpenWindows"); ///< of the last run, as Session has them
inline const Setting<QString> kUpdateServer("VXUpdateServer");
inline const Setting<bool> kOffersNewestVersion("SUShowCuttingEdgeVersion");

} // namespace runebook::Settings
