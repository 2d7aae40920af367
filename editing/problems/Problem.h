#pragma once

#include "editing/problems/ProblemKinds.h"
#include "model/VXGlyphInfo.h"

namespace runebook {

/// One thing that is wrong: a kind, the record concerned, and which of its parts.
struct Problem {
    ProblemKind kind = ProblemKind::MissingName;
    InfoPtr info; ///< null where no record is concerned, or it has gone
    int part = 0; ///< of DuplicateCodePoint, RepeatingAltName and MissingComponent the place in the record;
                  ///< of what was read the number of the note
};

} // namespace runebook
