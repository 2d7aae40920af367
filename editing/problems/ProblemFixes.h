#pragma once

#include "editing/problems/Problems.h"
#include "model/EditedValue.h"

namespace runebook {

/// The corrections that lose nothing a person would miss, and so may be made without asking. Each is tried
/// on a record; where it would not help, nothing is done.
class ProblemFixes
{
public:
    /// The name of the command for a kind; null where a person has to decide.
    static QString titleFor(ProblemKind kind);
    /// Whether a fix of \a kind would change \a info.
    static bool canFix(const VXDocument &document, ProblemKind kind, const VXGlyphInfo &info);
    /// Fixes what can be fixed among \a problems, as one undo step that names the number of records. Returns
    /// that number. Records whose fix no save would write stay as they are, and are told in \a leftOut.
    static qsizetype apply(VXDocument &document, std::span<const Problem> problems,
                           LeftOut *leftOut = nullptr);
};

} // namespace runebook
