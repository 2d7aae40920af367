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

/// Merges three texts as version control does by itself, where git is at hand; else what both sides have in
/// common at the beginning and the end, and between markers all of both sides between that. \a labels: base,
/// ours, theirs.
LineMerge mergeByLines(const std::array<QByteArray, 3> &texts, int markerSize,
                       const std::array<QString, 3> &labels);
/// The second way alone.
LineMerge bothBetweenMarkers(const QByteArray &ours, const QByteArray &theirs, int markerSize,
                             const std::array<QString, 3> &labels);

} // namespace runebook
