#pragma once

#include "editing/compare/CompareKeys.h"
#include "platform/defaults/Setting.h"

namespace runebook::Settings {

inline const Setting<CompareMode> kCompareMode("FilterMode", CompareMode::OnlyRight,
                                               {CompareMode::OnlyRight, CompareMode::Different,
                                                OutOfRange::ReadsAsFallback});
inline const Setting<CompareKey> kCompareKey("FilterKey", CompareKey::Name,
                                             {CompareKey::Name, CompareKey::Production,
                                              OutOfRange::ReadsAsFallback});

/// Whether the compare window folds away the fields that are the same on both sides.
inline const Setting<bool> kComparesOnlyDifferences("CompareOnlyDifferences", false);

/// What the compare window overlooks; the fields by their keys.
inline const Setting<bool> kComparesWithoutCase("CompareIgnoreCase", false);
inline const Setting<bool> kComparesWithoutSpaces("CompareIgnoreSpaces", false);
inline const Setting<QStringList> kComparesWithoutFields("CompareIgnoreFields");
/// Reports of the compare window are JSON instead of text.
inline const Setting<bool> kReportsComparisonsAsJson("CompareReportJson", false);

} // namespace runebook::Settings
