#pragma once

#include "platform/defaults/Setting.h"

#include <QStringList>

namespace runebook::Settings {

inline const Setting<QString> kAppearance("Appearance"); ///< "light", "dark" or nothing: as the desktop
inline const Setting<QStringList> kRecentFiles("RecentFiles"); ///< paths, the latest first

} // namespace runebook::Settings
