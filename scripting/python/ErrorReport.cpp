#include "scripting/python/ErrorReport.h"

namespace runebook {

using bridge::PythonRef;

namespace {

/// The program's own sys.stderr where it shows the output of scripts; else what sys.stderr was when the
/// interpreter started. Borrowed; may be null.
PyObject *ownStream()
{
    PyObject *modules = vxPySys_GetObject("modules");
    const auto module = [modules](const char *name) {
        return modules ? py.PyDict_GetItemString(modules, name) : nullptr;
    };
    if (PyObject *streams = module("runebook_streams")) {
        // The module keeps it.
        const PythonRef stream(py.PyObject_GetAttrString(streams, "own_stderr"));
        if (stream && !bridge::isNone(stream.get()))
            return stream.get();
        vxPyErr_Clear();
    }
    PyObject *errors = module("TesselErr");
    return errors ? errors : vxPySys_GetObject("__stderr__");
}

const char *sourceLabel = nullptr;
QByteArray sourceCode;

} // namespace

ErrorReport::Source::Source(const char *label, const QByteArray &code)
    : m_outerLabel(std::exchange(sourceLabel, label)), m_outerCode(std::exchange(sourceCode, code))
{
}

ErrorReport::Source::~Source()
{
    sourceLabel = m_outerLabel;
    sourceCode = m_outerCode;
}

ErrorReport::ErrorReport()
{
    PyObject *type = nullptr, *value = nullptr, *traceback = nullptr;
    vxPyErr_Fetch(&type, &value, &traceback);
    vxPyErr_NormalizeException(&type, &value, &traceback);
    m_type = PythonRef(type);
    m_value = PythonRef(value);
    m_traceback = PythonRef(traceback);
}

bool ErrorReport::isUpToScript()
{
    return vxPySys_GetObject("excepthook") != vxPySys_GetObject("__excepthook__")
        || vxPySys_GetObject("stderr") != ownStream();
}

/// False when it could not, with nothing printed.
bool ErrorReport::printWithSource() const
{
    if (!sourceLabel || !m_value || isUpToScript())
        return false;
    if (m_traceback)
        PythonRef(vxPyObject_CallMethod(m_value.get(), "with_traceback", "(O)", m_traceback.get()));
    const PythonRef module(vxPyImport_ImportModule("_tracebacks"));
    const PythonRef done(module ? vxPyObject_CallMethod(module.get(), "show", "(Oss)", m_value.get(),
                                                        sourceLabel, sourceCode.constData())
                                : nullptr);
    vxPyErr_Clear();
    return static_cast<bool>(done);
}

void ErrorReport::print()
{
    if (printWithSource())
        return;
    py.PyErr_Restore(PythonRef::shared(m_type.get()).release(), PythonRef::shared(m_value.get()).release(),
                     PythonRef::shared(m_traceback.get()).release());
    vxPyErr_PrintEx(1);
}

void ErrorReport::printPlainly() const
{
    PyObject *hook = vxPySys_GetObject("__excepthook__");
    if (!hook || !m_value)
        return;
    const PythonRef theirs = PythonRef::shared(vxPySys_GetObject("stderr"));
    vxPySys_SetObject("stderr", ownStream());
    const PythonRef nothing(bridge::none());
    PyObject *traceback = m_traceback ? m_traceback.get() : nothing.get();
    const PythonRef done(
        py.PyObject_CallFunctionObjArgs(hook, m_type.get(), m_value.get(), traceback, nullptr));
    vxPyErr_Clear();
    vxPySys_SetObject("stderr", theirs.get());
}

} // namespace runebook
