#pragma once

namespace runebook::bridge {

/// For an error in code of a script that the program called, an observer or a delegate, where nobody is there
/// to take it: printed as an uncaught one. What ends a script waits for the operation to come back to the
/// script.
void reportCallbackError();

} // namespace runebook::bridge
