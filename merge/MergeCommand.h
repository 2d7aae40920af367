#pragma once

#include "merge/ThreeWayMerge.h"

#include <QTextStream>

namespace runebook {

/// What `--merge` is asked for.
struct MergeRequest {
    QString base, ours, theirs; ///< paths
    QString output; ///< path; empty: the file of our side
    QString path; ///< what the file is called in reports and behind markers; empty: each by its own path
    CompareKey key = CompareKey::Name;
    std::optional<MergeSide> prefer;
    int markerSize = 7;
    bool asJson = false;
};

/// How a merge ended; also the exit status of the program.
enum class MergeResult : int { Merged = 0, Conflicts = 1, Unreadable = 2 };

/// Merges three files and writes the result, with conflicts between markers, and a report to \a out. Sides
/// that cannot be merged by records are merged by lines, so that whatever is written holds both; then the
/// result is Unreadable, and \a errors says why. Only a side that cannot be opened leaves everything as it
/// is. Files of which none holds glyph data are merged by lines as version control would.
MergeResult mergeFiles(const MergeRequest &request, QTextStream &out, QTextStream &errors);

} // namespace runebook
