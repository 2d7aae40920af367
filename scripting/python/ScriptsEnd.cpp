#include "scripting/python/ScriptsEnd.h"

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

} // namespace

std::span<const char *const> codeOfScriptsEnd()
{
    return kParts;
}

} // namespace runebook
