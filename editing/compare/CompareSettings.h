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

} // namespace runebook::Settings
