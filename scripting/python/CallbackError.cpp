#include "scripting/python/CallbackError.h"

#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptRun.h"

namespace runebook::bridge {

void reportCallbackError()
{
    if (!py.PyErr_Occurred() || ScriptRun::keepEnd())
        return;
    // Printing SystemExit would end the program.
    if (py.PyErr_ExceptionMatches(*py.PyExc_SystemExit))
        vxPyErr_Clear();
    else
        vxPyErr_PrintEx(0);
}

} // namespace runebook::bridge
