#pragma once

#include "platform/Error.h"
#include "platform/UndoManager.h"

namespace runebook {

/// Takes back the step of that number, from 0, in the history of a document and leaves all behind it as they
/// are: a step of its own. False, with the sentence that names what is in the way, where later steps changed
/// the same.
bool undoOnly(UndoManager &history, int step, Error *error);

} // namespace runebook
