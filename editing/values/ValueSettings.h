#pragma once

#include "platform/defaults/Setting.h"

#include <limits>

namespace runebook::Settings {

inline const Setting<bool> kValuesShown("ValuesPanelShown");
/// In pixels.
inline const Setting<int> kValuesWidth("ValuesPanelWidth", 260,
                                       {1, std::numeric_limits<int>::max(), OutOfRange::ReadsAsFallback});
/// The id of what was counted last.
inline const Setting<QString> kValuesField("ValuesPanelField", QStringLiteral("category"));
/// Whether values stand in the order of their texts and not of their counts, and in which direction.
inline const Setting<bool> kValuesByText("ValuesPanelSortsByText");
inline const Setting<bool> kValuesAscending("ValuesPanelSortsUp");

} // namespace runebook::Settings
