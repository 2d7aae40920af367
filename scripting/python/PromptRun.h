#pragma once

#include <QString>

namespace runebook {

/// Runs one line as an interactive session does: in "__main__", with the prelude of the macro panel before
/// it, so that "Doc" is the document in front; the value of an expression is printed unless it is None. The
/// line itself, after ">>> ", and all output go to the console. Does nothing without an interpreter.
void runPromptCode(const QString &code);

} // namespace runebook
