#pragma once

#include <QString>
#include <QVariant>

class QWidget;

/// The questions that scripts ask, in windows titled by the script, as large as what is in them. The last
/// answers to a question are what it begins with the next time it is asked with the same values to begin
/// with. Main thread, in programs with windows.
namespace runebook::ScriptDialogs {

/// Asks for several values at once. Each of \a fields is a map with "key", "label" and "value" and perhaps
/// "choices" (a list of texts); what the value is decides how it is asked for: a yes or no, a number, a text,
/// lines of text. Answers a map of all values by key; an invalid value when the user cancels.
enum class Memory { Keep, None };
QVariant askFields(const QString &prompt, const QVariantList &fields, Memory memory = Memory::Keep);
/// "yes" or "no"; null when the user cancels.
QString askYesNo(const QString &question, const QString &explanation);
/// The path of a file to open, or of one to save to; null when the user cancels. \a filters as in "Fonts
/// (*.ttf)".
QString askFile(const QString &prompt, bool isToSave, const QString &name, const QStringList &filters);
/// \a text of any length, which can be copied.
void showMessage(const QString &heading, const QString &text);
/// Above which a question or a progress stands: the window in front, or the one that was while none is, as
/// between two questions.
QWidget *windowBelow();
/// So wide at least, so that titles can be read.
int leastWidth(const QWidget &dialog);

} // namespace runebook::ScriptDialogs
