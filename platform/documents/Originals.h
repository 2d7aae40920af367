#pragma once

#include "platform/Error.h"

#include <QString>

/// Copies of files as they were before the program wrote them differently for the first time, kept in the
/// user's data folder. When there are too many the oldest go.
namespace runebook::Originals {

inline constexpr qsizetype kMostFiles = 50;
inline constexpr qint64 kMostBytes = qint64(1) << 30;

/// The folder of the copies; empty when it cannot be made.
QString folder();
/// Copies the file \a path, synced. The copy's path; empty, and an error, when there is none.
QString keepCopy(const QString &path, Error *error = nullptr);
/// Removes the oldest copies until there are at most \a files of at most \a bytes together; the newest stays
/// whatever its size.
void prune(qsizetype files = kMostFiles, qint64 bytes = kMostBytes);

} // namespace runebook::Originals
