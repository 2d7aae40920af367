#pragma once

class QWidget;
class VXMacroViewController;

namespace runebook {

/// Asks in a sheet of \a window for a line of \a tab and puts the caret into it.
void askForLine(VXMacroViewController &tab, QWidget *window);

} // namespace runebook
