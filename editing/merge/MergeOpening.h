#pragma once

#include "editing/merge/MergeWindow.h"
#include "merge/MergeProgress.h"

namespace runebook {

/// What a merge is made from, read and merged on another thread.
struct MergeSource {
    QByteArray text;
    QString path; ///< to be read instead, unless empty
};

/// Base, ours and theirs.
using MergeSources = std::array<MergeSource, 3>;

/// Reads the files among \a sources and merges. Any thread.
PreparedMerge prepareMerge(const MergeSources &sources, CompareKey key, MergeProgress *progress = nullptr);
/// Does that on another thread; \a then is called on the main thread, unless \a context has gone.
void prepareMergeApart(MergeSources sources, CompareKey key, std::shared_ptr<MergeProgress> progress,
                       QObject *context, std::function<void(PreparedMerge)> then);

/// The text that a save of the document would write as glyph data.
QByteArray textOfDocument(const VXDocument &document);

/// Opens the result as a new document called \a name, in a window of its own, and the window of the merge in
/// front of it. Null and an error when that is not possible.
MergeWindow *showMerge(PreparedMerge prepared, const MergeTitles &titles, const QString &name,
                       Error *error = nullptr);
/// The same with the file \a path as the one that a save writes; without a window of its own.
MergeWindow *showMergeInto(PreparedMerge prepared, const MergeTitles &titles, const QString &path,
                           Error *error = nullptr);
/// Opens the window on the conflicts of the document's file. The document gets our side of each, which is a
/// step of its history. Null and an error where it cannot.
MergeWindow *resolveConflicts(VXDocument &document, Error *error = nullptr);

} // namespace runebook
