#include "scripting/python/OutputModules.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/ScriptRun.h"

// The interpreter is not finalised: extension modules that script authors install, and threads that still
// run, are known to crash programs in which it is. What scripts can see of its end happens all the same.

namespace runebook {

namespace {

// Whoever holds them: a file that is still open has its text written.
constexpr const char kWriteOut[] = R"(
import gc, io
for thing in gc.get_objects():
    if issubclass(type(thing), io.IOBase):
        try:
            if not thing.closed:
                thing.flush()
        except Exception:
            pass
)";

// Each part in turn, so that an error in one does not keep the others from happening.
constexpr const char *kParts[] = {
    "import threading\n"
    "threading._shutdown()\n",

    "import atexit\n"
    "atexit._run_exitfuncs()\n",

    // First: of what refers to itself the collector may end a file before the buffer in front of it.
    kWriteOut,

    // Modules lose their names as they do when the interpreter ends: what only they held is closed. Those of
    // the interpreter and of packages stay; their files are written out below.
    R"(
import gc, os, sys, threading

library = os.path.dirname(os.__file__) + os.sep
own = {"AppKit", "Foundation", "MainApp", "objc"}

def is_of_script(name, module):
    path = getattr(module, "__file__", None)
    return name == "__main__" or (
        isinstance(path, str) and path.endswith(".py") and not path.startswith(library)
        and name not in own and "-packages" + os.sep not in path)

def empty(names):
    for hidden in (True, False):
        for name in list(names):
            if isinstance(name, str) and name != "__builtins__" and (
                    not hidden or (name[:1] == "_" and name[:2] != "__")):
                names[name] = None

threading.excepthook = lambda problem: None  # daemons find their modules empty
if "Foundation" in sys.modules:
    sys.modules["Foundation"]._center._observers = []
for name, module in reversed(list(sys.modules.items())):
    if isinstance(module, type(sys)) and is_of_script(name, module):
        empty(vars(module))
module = None
gc.collect()
)",

    kWriteOut,
};

/// Runs code of the program's own with names that no script can reach.
void runApart(const char *code)
{
    PyObject *names = vxPyDict_New();
    PyObject *builtins = names ? vxPyImport_ImportModule("builtins") : nullptr;
    if (builtins)
        py.PyDict_SetItemString(names, "__builtins__", builtins);
    PyObject *compiled =
        builtins ? vxPy_CompileStringFlags(code, "<internal>", python::kFileInput, nullptr) : nullptr;
    PyObject *result = compiled ? vxPyEval_EvalCode(compiled, names, names) : nullptr;
    if (!result)
        ScriptRun::reportPendingError();
    for (PyObject *object : {result, compiled, builtins, names}) {
        if (object)
            vxPy_DecRef(object);
    }
}

} // namespace

void finishScripts()
{
    if (!vxPyGILState_Ensure)
        return;
    {
        const PythonLock lock;
        for (const char *part : kParts)
            runApart(part);
    }
    deliverPendingOutput();
}

} // namespace runebook
