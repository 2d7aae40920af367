#pragma once

#include <QString>

class QLabel;
class QMessageBox;

namespace runebook {

/// A label that shows its text as it stands: data from a file may look like markup, and markup may name
/// other files.
QLabel *plainLabel(const QString &text, QWidget *parent = nullptr);
/// As much of the beginning of \a text as a message shows, so that its buttons stay on the screen.
QString messageText(const QString &text);
/// Texts of a message box that stand as they are, as much of them as it shows.
void setPlainTexts(QMessageBox &box, const QString &text, const QString &informativeText);
/// \a text for a tooltip, which takes markup and has no other way to be told not to.
QString escapedToolTip(const QString &text);

/// \a text as a terminal may show it: characters that steer the terminal or turn the direction of the text
/// are written out.
QString terminalText(const QString &text);

} // namespace runebook
