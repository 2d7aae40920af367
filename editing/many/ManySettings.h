#pragma once

#include "platform/defaults/Setting.h"

namespace runebook::Settings {

// How many records were edited at once last.

/// The key of the list field whose entries were added or removed.
inline const Setting<QString> kEntriesField("EntriesField", QStringLiteral("anchors"));
inline const Setting<QString> kVariantSuffixes("VariantSuffixes", QStringLiteral(".sc")); ///< as typed
/// The keys of the fields that variants take over, separated by blanks.
inline const Setting<QString>
    kVariantFields("VariantFields",
                   QStringLiteral("category subCategory case script direction production anchors marks"));
inline const Setting<int> kProductionRule("ProductionRule", 0, {0, 2}); ///< runebook::ProductionRule
inline const Setting<bool> kProductionOnlyEmpty("ProductionOnlyEmpty", true);

} // namespace runebook::Settings
