#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

// What tables are exported like, and copied: as it was chosen last.

/// The keys of all fields in their order; a minus stands in front of those that are left out.
inline const Setting<QStringList> kTableFields("ExportTableFields");
inline const Setting<bool> kTableTitles("ExportTableTitles"); ///< headings are titles instead of keys
inline const Setting<QString> kTableSeparator("ExportTableSeparator", QStringLiteral("\t"));
inline const Setting<bool> kTableMark("ExportTableByteOrderMark");
inline const Setting<int> kTableRecords("ExportTableRecords", 0, {0, 2}); ///< runebook::TableRecords

} // namespace runebook::Settings
