#include "scripting/python/PythonFunctions.h"

#include <dlfcn.h>
#include <initializer_list>

#define RUNEBOOK_DEFINE_SLOT(result, name, arguments) result(*vx##name) arguments = nullptr;
RUNEBOOK_PYTHON_SLOTS(RUNEBOOK_DEFINE_SLOT)
#undef RUNEBOOK_DEFINE_SLOT

namespace runebook {

using namespace Qt::StringLiterals;

PythonBridgeFunctions py;

namespace {

template <typename Function> bool look(void *library, const char *name, Function &slot)
{
    slot = reinterpret_cast<Function>(::dlsym(library, name));
    return slot != nullptr;
}

/// The slots that bear the name of an older interpreter: the newer name first, the older one as fallback.
void resolvePairs(void *library)
{
    if (!look(library, "PyUnicode_FromString", vxPyString_FromString))
        look(library, "PyString_FromString", vxPyString_FromString);
    // Here it is the other way round, and one symbol may fill both slots.
    if (look(library, "PyString_AsString", vxPyString_AsString)) {
        vxPyBytes_AsString = vxPyString_AsString;
    } else {
        look(library, "PyUnicode_AsUTF8", vxPyString_AsString);
        look(library, "PyBytes_AsString", vxPyBytes_AsString);
    }
    if (!look(library, "PyUnicode_Join", vxPyString_Join))
        look(library, "PyUnicodeUCS2_Join", vxPyString_Join);
}

} // namespace

void resolvePythonFunctions(void *library)
{
#define RUNEBOOK_RESOLVE(result, name, arguments) look(library, #name, vx##name);
    RUNEBOOK_PYTHON_SLOTS(RUNEBOOK_RESOLVE)
#undef RUNEBOOK_RESOLVE
    resolvePairs(library);
#define RUNEBOOK_RESOLVE(result, name, arguments) look(library, #name, py.name);
    RUNEBOOK_PYTHON_BRIDGE_FUNCTIONS(RUNEBOOK_RESOLVE)
    RUNEBOOK_PYTHON_OPTIONAL_FUNCTIONS(RUNEBOOK_RESOLVE)
#undef RUNEBOOK_RESOLVE
#define RUNEBOOK_RESOLVE(name) look(library, #name, py.name);
    RUNEBOOK_PYTHON_OBJECTS(RUNEBOOK_RESOLVE)
    RUNEBOOK_PYTHON_EXCEPTIONS(RUNEBOOK_RESOLVE)
#undef RUNEBOOK_RESOLVE
}

QStringList missingPythonFunctions()
{
    QStringList missing;
    const auto check = [&missing](const char *name, bool isThere) {
        if (!isThere)
            missing << QString::fromLatin1(name);
    };
    // In the table because they belong to it; nothing calls them.
    const QStringList unused {u"PyRun_SimpleFileExFlags"_s, u"PyString_Join"_s,   u"PyObject_GetAttr"_s,
                              u"PyObject_Repr"_s,           u"PyEval_SetTrace"_s, u"PyThreadState_Get"_s,
                              u"PyFrame_GetLineNumber"_s};
#define RUNEBOOK_CHECK(result, name, arguments)                                                              \
    check(#name, vx##name != nullptr || unused.contains(QLatin1StringView(#name)));
    RUNEBOOK_PYTHON_SLOTS(RUNEBOOK_CHECK)
#undef RUNEBOOK_CHECK
#define RUNEBOOK_CHECK(result, name, arguments) check(#name, py.name != nullptr);
    RUNEBOOK_PYTHON_BRIDGE_FUNCTIONS(RUNEBOOK_CHECK)
#undef RUNEBOOK_CHECK
#define RUNEBOOK_CHECK(name) check(#name, py.name != nullptr);
    RUNEBOOK_PYTHON_OBJECTS(RUNEBOOK_CHECK)
    RUNEBOOK_PYTHON_EXCEPTIONS(RUNEBOOK_CHECK)
#undef RUNEBOOK_CHECK
    return missing;
}

void clearPythonFunctions()
{
#define RUNEBOOK_CLEAR(result, name, arguments) vx##name = nullptr;
    RUNEBOOK_PYTHON_SLOTS(RUNEBOOK_CLEAR)
#undef RUNEBOOK_CLEAR
    py = {};
}

} // namespace runebook
