#pragma once

#include "editing/compare/CountedWork.h"
#include "editing/problems/Problems.h"

namespace runebook {

enum class ProblemListForm {
    Text, ///< a line for people
    Tabs, ///< a table under headings
    Commas, ///< the same for spreadsheets
};

/// Problems as they are listed: kind, record, code points, explanation; a line for each. Null when \a
/// progress stopped it.
QString textOfProblems(const Problems &problems, std::span<const Problem> list, ProblemListForm form,
                       const WorkProgress &progress = {});
/// What a name of a file asks for by its suffix.
ProblemListForm problemListFormOf(const QString &path);

} // namespace runebook
