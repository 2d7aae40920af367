#include "scripting/python/PromptRun.h"

#include "scripting/python/ErrorReport.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

void runPromptCode(const QString &code)
{
    if (!vxPyGILState_Ensure)
        return;
    if (ScriptConsole *console = scriptConsole())
        console->setWrite(">>> "_L1 + code + u'\n');
    const PythonLock lock;
    const ScriptRun run(QCoreApplication::translate("ScriptRun", "Macro"));
    if (run.isRefused())
        return;
    if (!runPanelPrelude())
        return;
    if (code.contains(QChar(0))) {
        py.PyErr_SetString(*py.PyExc_ValueError, "source code string cannot contain null bytes");
        ScriptRun::reportPendingError();
        return;
    }
    // An indented line is what was copied out of a script.
    const QByteArray line = code.trimmed().toUtf8() + "\n";
    const ErrorReport::Source shown("<prompt>", line);
    vxRun_Line(line.constData(), "<prompt>");
}

} // namespace runebook
