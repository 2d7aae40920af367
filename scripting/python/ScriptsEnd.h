#pragma once

#include <span>

namespace runebook {

/// What the interpreter runs when the process is about to end: it is not finalised, since extension modules
/// that script authors install, and threads that still run, are known to crash programs in which it is. What
/// scripts can see of its end happens all the same. In parts, each to be run with names that no script can
/// reach, so that an error in one does not keep the others from happening.
std::span<const char *const> codeOfScriptsEnd();

} // namespace runebook
