#pragma once

#include "document/VXDocument.h"
#include "editing/compare/KeyCounts.h"
#include "editing/problems/NameRelations.h"
#include "editing/problems/Problem.h"

namespace runebook {

/// What the texts on problems ask of the list. Refers to all.
struct ProblemContext {
    const VXDocument &document;
    const KeyCounts &codes; ///< by one more than a code point
    const NameRelations &relations;
};

/// What is wrong with a record, in words, where it follows from the records as they are now.
QString textOfProblem(const Problem &problem, const ProblemContext &context);

} // namespace runebook
