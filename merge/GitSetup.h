#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QStringList>
#include <optional>

namespace runebook {

/// What a run of git came to.
struct GitAnswer {
    int status = 0;
    QByteArray output;
    QString errors;
};
/// Runs git with these arguments, without a shell, and waits for it; nothing where there is none.
std::optional<GitAnswer> runGit(const QStringList &arguments);

enum class GitScope { Repository, User };

/// Tells git how to merge and show glyph data files with the program at \a program: in the repository of the
/// current folder, or for all of the user's. Twice is once. False and an error (domain "GitError") without
/// git, and outside of a repository.
[[nodiscard]] bool setUpGit(const QString &program, GitScope scope, Error *error);
/// The lines that say in a file .gitattributes for which files that is.
QString gitAttributeLines();

} // namespace runebook
