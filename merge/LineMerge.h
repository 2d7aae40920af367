#pragma once

#include <QByteArray>
#include <QString>
#include <array>

namespace runebook {

/// A merge by lines, for what cannot be merged by records. Both sides are in it.
struct LineMerge {
    QByteArray text;
    bool hasConflicts = false;
};

/// Merges three texts as version control does by itself, where git is at hand; else as mergeByCommonLines().
/// \a labels: base, ours, theirs.
LineMerge mergeByLines(const std::array<QByteArray, 3> &texts, int markerSize,
                       const std::array<QString, 3> &labels);
/// Lines that each text has once, in the same order, hold the texts together; of what stands between two of
/// them the side is taken that changed it, and between markers all sides where both did.
LineMerge mergeByCommonLines(const std::array<QByteArray, 3> &texts, int markerSize,
                             const std::array<QString, 3> &labels);

} // namespace runebook
