#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<QByteArray> kTableColumns("TableHeaderState"); ///< widths, order, which are shown
inline const Setting<double> kTableFontSize("TableFontSize"); ///< in points; until set that of the desktop
/// [path, key of a field, order], the file sorted last at the end.
inline const Setting<QVariantList> kTableSorts("TableSorts");

inline const Setting<QString> kSortNamePrefix("sortNamePrefix", QStringLiteral("a"));
inline const Setting<int> kSortNameStart("sortNameStart", 1);
inline const Setting<int> kSortNameStep("sortNameStep", 1);
inline const Setting<int> kSortNameDigits("sortNameDigits", 3);

} // namespace runebook::Settings
