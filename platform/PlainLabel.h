#pragma once

#include <QString>

class QLabel;
class QMessageBox;
class QWidget;

namespace runebook {

/// A label that shows its text as it stands: data from a file may look like markup.
QLabel *plainLabel(const QString &text, QWidget *parent = nullptr);
/// Texts of a message box that stand as they are, as much of them as it shows.
void setPlainTexts(QMessageBox &box, const QString &text, const QString &informativeText);

} // namespace runebook
