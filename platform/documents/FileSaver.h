#pragma once

#include "platform/Error.h"
#include "platform/documents/FileState.h"

#include <QString>
#include <functional>
#include <optional>
#include <string_view>

namespace runebook {

/// Where a writer puts its blocks, one after the other. Answers false once a block could not be written; the
/// writer stops then.
using BlockSink = std::function<bool(std::string_view block)>;
/// Produces the whole content of a file. Answers false and fills the error when it cannot.
using ContentProducer = std::function<bool(const BlockSink &sink, Error *error)>;

/// What a save knows of its file.
struct SavedState {
    std::optional<FileState> before; ///< what the new content was made from; nothing: whatever is there
    FileState after; ///< filled by a save that went well
};

/// Replaces the content of files so that the old or the new one always lies whole on the disk.
class FileSaver
{
public:
    /// Writes what \a produce gives into the file \a path, in place: same inode, owner, mode, attributes and
    /// links. The new content is written and synced to a rescue file beside it first (in the user's data
    /// folder where the file's own folder cannot be written); the rescue goes only after the file was
    /// written, synced and compared. A file that is not there yet appears whole or not at all. On failure the
    /// error (domain "SaveError", an errno as code) says which step failed, why, and what lies where.
    ///
    /// From the last look at the file to the end the file is locked, so that of two programs that save at the
    /// same time one finds out. With \a saved the file must be in the state that is expected there.
    [[nodiscard]] static bool save(const QString &path, const ContentProducer &produce,
                                   Error *error = nullptr, SavedState *saved = nullptr);

    enum class Wait { No, UntilOnDisk };
    /// Writes a new file and puts it in the place of \a path in one step: for files that are the program's
    /// own. Any thread.
    [[nodiscard]] static bool replace(const QString &path, const ContentProducer &produce,
                                      Error *error = nullptr, Wait wait = Wait::No);
};

} // namespace runebook
