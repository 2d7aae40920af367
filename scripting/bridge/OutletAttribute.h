#pragma once

namespace runebook::bridge {

/// Lets scripts ask widgets for the parts of windows by the names these have in their interface file:
/// "window.findField()". Operations of that name come first. Names are known once a window was met.
void setUpOutlets();

} // namespace runebook::bridge
