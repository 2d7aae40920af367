#pragma once

#include "document/SavableForm.h"
#include "document/VXDocument.h"
#include "editing/problems/ProblemKinds.h"

namespace runebook {

/// What a hint says: what the record has, and what Unicode has.
QString textOfHint(ProblemKind kind, const VXGlyphInfo &info, const VXDocument &document);
/// The record as Unicode has it, where one value follows; nothing for what a person has to decide.
std::vector<FieldFix> hintFixes(const VXDocument &document, ProblemKind kind, const VXGlyphInfo &info);

} // namespace runebook
