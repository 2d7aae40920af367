#pragma once

#include "scripting/python/PythonFunctions.h"

#include <QString>
#include <cxxabi.h>
#include <string_view>
#include <utility>
#include <vector>

namespace runebook::bridge {

/// Owns one reference to an object of the interpreter; null for none. The lock must be held.
class PythonRef
{
public:
    PythonRef() = default;
    /// Takes over a new reference.
    explicit PythonRef(PyObject *object) : m_object(object) { }
    /// Shares \a object.
    static PythonRef shared(PyObject *object)
    {
        if (object)
            py.Py_IncRef(object);
        return PythonRef(object);
    }
    PythonRef(PythonRef &&other) noexcept : m_object(std::exchange(other.m_object, nullptr)) { }
    PythonRef &operator=(PythonRef &&other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~PythonRef()
    {
        if (m_object)
            vxPy_DecRef(m_object);
    }

    PyObject *get() const { return m_object; }
    /// Gives the reference away.
    [[nodiscard]] PyObject *release() { return std::exchange(m_object, nullptr); }
    explicit operator bool() const { return m_object != nullptr; }

private:
    PyObject *m_object = nullptr;
};

/// A new reference to None.
PyObject *none();
inline bool isNone(PyObject *object)
{
    return object == py._Py_NoneStruct;
}
/// Whether \a object is of the kind that the flag of its type tells (python::kUnicodeSubclass, ...).
inline bool isKind(PyObject *object, unsigned long flag)
{
    return (py.PyType_GetFlags(object->ob_type) & flag) != 0;
}

/// A null text becomes None; half surrogate pairs survive in both directions.
PyObject *pythonText(const QString &text);
/// The same of UTF-8, absent without an address. Null without an error set when it is not well formed.
PyObject *pythonText(std::string_view utf8);
/// False with a Python error set when \a object is neither a str nor None. Uses the memory that \a text has.
bool readText(PyObject *object, QString &text);

/// Sets a Python error; null so that it can be returned.
PyObject *raise(PyObject *exception, const QString &message);
/// The name of an object's type, for messages.
QString typeName(PyObject *object);

/// Calls \a function with the exceptions of C++ turned into Python's; \a failed when one came.
template <typename Result, typename Function> Result guarded(Result failed, Function &&function);
/// Sets the Python error for the C++ exception that is being handled.
void raiseCurrentException();

template <typename Result, typename Function> Result guarded(Result failed, Function &&function)
{
    try {
        return function();
    } catch (abi::__forced_unwind &) {
        throw; // the end of a thread, which must come through
    } catch (...) {
        raiseCurrentException();
        return failed;
    }
}

/// Clears the pending error when it only tells that an attribute is missing; true when none is left.
bool clearMissingAttribute();

/// A tuple of \a items; null when one of them is.
PythonRef tupleOf(std::vector<PythonRef> items);

/// False with RuntimeError set on any thread but the main one, and in a process that a script forked: nothing
/// of the program may be touched there.
bool checkThread();

} // namespace runebook::bridge
