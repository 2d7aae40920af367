#pragma once

#include "editing/compare/CompareReport.h"
#include "editing/problems/ProblemKinds.h"

#include <QIODevice>
#include <QStringList>
#include <functional>
#include <optional>
#include <vector>

class VXDocument;

namespace runebook {

/// Whether each record of a document is to be checked; nothing and an error when that cannot be told.
using RecordChoice =
    std::function<std::optional<std::vector<bool>>(const VXDocument &document, Error *error)>;

/// How a check ended, of several files the worst; also the exit status of the program.
enum class CheckResult : int { Clean = 0, Problems = 1, Unreadable = 2 };

struct CheckOptions {
    ReportFormat format = ReportFormat::Text;
    bool isStrict = false; ///< hints count as problems
    ProblemKindSet leftOut = 0; ///< kinds that are not told
};

/// Reads glyph data files and tables and writes to \a out what is in them and every problem: all that the
/// problems pane knows, with line, record and field. As text, a line for each problem that other programs can
/// take apart, "file:line: kind: record.field: sentence" with "hint " before the kind of a hint, and one that
/// sums the file up; as JSON one array with an object for each file. The file "-" is what \a input gives. Why
/// a file cannot be read goes to \a errors as well. With a \a choice only problems of records that it takes
/// are told of, none of the file as a whole; all records count as there.
CheckResult checkFiles(const QStringList &files, const CheckOptions &options, QTextStream &out,
                       QTextStream &errors, QIODevice &input, const RecordChoice &choice = {});

} // namespace runebook
