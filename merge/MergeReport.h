#pragma once

#include "merge/ThreeWayMerge.h"

#include <QTextStream>

namespace runebook {

/// Writes what a merge came to, for a person at a terminal: a line for each conflict with its key and field
/// and the three values, a line for each record that may have been renamed, and one that sums up. \a path is
/// what the merged file is called.
void writeMergeReport(const ThreeWayMerge &merge, const QString &path, QTextStream &out);
/// The same as one JSON object.
void writeMergeJson(const ThreeWayMerge &merge, const QString &path, QTextStream &out);

} // namespace runebook
