#pragma once

#include "scripting/python/PythonValue.h"

#include <QByteArray>

namespace runebook {

/// The error that ended a script, on its way to the user. The lock of the interpreter must be held.
class ErrorReport
{
public:
    /// Takes the pending error.
    ErrorReport();

    /// Whether code of the script has its part in print(): a sys.excepthook or a sys.stderr of its own.
    static bool isUpToScript();
    /// As the interpreter reports uncaught errors, with the lines of code that stands in no file. Once.
    void print();
    /// To the program's own stream, with none of the script's code.
    void printPlainly() const;

    /// For one scope: the code that runs under \a label, in UTF-8.
    class Source
    {
    public:
        Source(const char *label, const QByteArray &code);
        ~Source();
        Q_DISABLE_COPY_MOVE(Source)

    private:
        const char *m_outerLabel;
        QByteArray m_outerCode;
    };

private:
    bool printWithSource() const;

    bridge::PythonRef m_type;
    bridge::PythonRef m_value;
    bridge::PythonRef m_traceback;
};

} // namespace runebook
