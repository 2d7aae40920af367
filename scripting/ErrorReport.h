#pragma once

#include "scripting/bridge/PythonValue.h"

namespace runebook {

/// The error that ended a script, on its way to the user. The lock of the interpreter must be held.
class ErrorReport
{
public:
    /// Takes the pending error.
    ErrorReport();

    /// Whether code of the script has its part in print(): a sys.excepthook or a sys.stderr of its own.
    static bool isUpToScript();
    /// As the interpreter reports uncaught errors. Once.
    void print();
    /// To the program's own stream, with none of the script's code.
    void printPlainly() const;

private:
    bridge::PythonRef m_type;
    bridge::PythonRef m_value;
    bridge::PythonRef m_traceback;
};

} // namespace runebook
