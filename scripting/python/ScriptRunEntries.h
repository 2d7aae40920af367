#pragma once

#include <QString>

namespace runebook {

/// What the macro panel runs before the user's code. False when it was interrupted: then nobody wants the
/// rest. The lock must be held.
bool runPanelPrelude();
/// Runs \a code as the macro panel does: its prelude, then the code under the label "macro panel". Its undo
/// step is called \a name, "Macro" without one. Does nothing without an interpreter.
void runPanelCode(const QString &code, const QString &name = {});
/// Runs the file at the absolute \a path as the Scripts menu does. Its folder stays in sys.path and becomes
/// the working directory.
void runScriptFile(const QString &path);
/// Runs \a code as a script file whose folder is the working directory, under the label "<stdin>".
void runStandardInput(const QString &code);

} // namespace runebook
