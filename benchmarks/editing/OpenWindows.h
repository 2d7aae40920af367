#pragma once

#include "editing/window/VXWindowController.h"

namespace runebook {

/// The window of the corpus with so many records, opened and shown once. Stays until closeWindows().
VXWindowController &windowOf(int records);
/// Before the application ends.
void closeWindows();

} // namespace runebook
