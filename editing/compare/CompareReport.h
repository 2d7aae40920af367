#pragma once

#include "editing/compare/CompareKeys.h"
#include "editing/compare/RecordPairs.h"
#include "platform/Error.h"

#include <QString>
#include <QTextStream>

namespace runebook {

enum class ReportFormat {
    Text, ///< for a person at a terminal
    Json, ///< an array, one object a line
};

/// How a comparison ended; also the exit status of the program.
enum CompareResult : int { FilesEqual = 0, FilesDifferent = 1, FilesUnreadable = 2 };

/// Compares two files and writes to \a out which glyphs either lacks and which fields differ in those that
/// both have. Records are told apart by \a key, those without it by their name; the order of the records
/// does not count, every field does, empty and absent being the same. Writes nothing when a file cannot be
/// read.
CompareResult compareFiles(const QString &left, const QString &right, CompareKey key, ReportFormat format,
                           QTextStream &out, Error *error = nullptr);

/// Writes the same of records that are open; \a left and \a right stand where the paths do otherwise. False
/// when \a progress stops it, part of it being written.
bool writeReport(QTextStream &out, const QString &left, const QString &right,
                 const FileDifference &difference, CompareKey key, ReportFormat format,
                 const WorkProgress &progress = {});

} // namespace runebook
