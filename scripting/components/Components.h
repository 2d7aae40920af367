#pragma once

namespace runebook {

/// Makes known to the bridge what stands beside documents: code editor, tab bar and update check, and the
/// delegates that scripts make. Before the interpreter starts.
void registerComponents();

} // namespace runebook
