#pragma once

#include <QWidget>

namespace runebook::bridge {

/// Lets scripts ask widgets for the parts of \a window by the names these have in their interface file:
/// "window.findField()". Operations of that name come first. False with a Python error set when that fails.
bool announceParts(const QWidget &window);

} // namespace runebook::bridge
