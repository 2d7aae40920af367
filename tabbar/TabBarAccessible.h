#pragma once

namespace runebook {

/// Makes tab bars known to assistive technology: a list of tabs, each with its close button as a child, both
/// with names and a press action. Safe to call again.
void installTabBarAccessibility();

} // namespace runebook
