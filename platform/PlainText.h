#pragma once

#include <QString>

namespace runebook {

// Data from a file may look like markup, and markup may name other files; so texts are shown as they stand.

/// As much of the beginning of \a text as a message shows, so that its buttons stay on the screen.
QString messageText(const QString &text);
/// \a text for a tooltip, which takes markup and has no other way to be told not to.
QString escapedToolTip(const QString &text);

/// \a text as a terminal may show it: characters that steer the terminal or turn the direction of the text
/// are written out.
QString terminalText(const QString &text);

} // namespace runebook
