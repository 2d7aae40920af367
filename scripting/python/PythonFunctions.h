#pragma once

#include "scripting/python/PythonABI.h"

#include <QStringList>
#include <cstdio>

// The function table: one slot for each entry point of the embedding interface, empty until a library was
// loaded. The order is the one in which the names are looked up.
#define RUNEBOOK_PYTHON_SLOTS(SLOT)                                                                          \
    SLOT(const char *, Py_GetVersion, ())                                                                    \
    SLOT(int, PyArg_ParseTuple, (PyObject *, const char *, ...))                                             \
    SLOT(void, PyGILState_Release, (int))                                                                    \
    SLOT(int, PyGILState_Ensure, ())                                                                         \
    SLOT(int, PyList_Append, (PyObject *, PyObject *))                                                       \
    SLOT(int, PyList_Insert, (PyObject *, Py_ssize_t, PyObject *))                                           \
    SLOT(int, PyRun_SimpleFileExFlags, (std::FILE *, const char *, int, void *))                             \
    SLOT(PyObject *, Py_CompileStringFlags, (const char *, const char *, int, void *))                       \
    SLOT(PyObject *, PyEval_EvalCode, (PyObject *, PyObject *, PyObject *))                                  \
    SLOT(void, PyErr_PrintEx, (int))                                                                         \
    SLOT(void, PyErr_Clear, ())                                                                              \
    SLOT(int, PySequence_Contains, (PyObject *, PyObject *))                                                 \
    SLOT(PyObject *, PyString_FromString, (const char *))                                                    \
    SLOT(const char *, PyString_AsString, (PyObject *))                                                      \
    SLOT(const char *, PyBytes_AsString, (PyObject *))                                                       \
    SLOT(PyObject *, PyObject_Str, (PyObject *))                                                             \
    SLOT(PyObject *, PyString_Join, (PyObject *, PyObject *))                                                \
    SLOT(PyObject *, PySys_GetObject, (const char *))                                                        \
    SLOT(PyObject *, PyObject_GetAttr, (PyObject *, PyObject *))                                             \
    SLOT(int, PySys_SetObject, (const char *, PyObject *))                                                   \
    SLOT(int, PyDict_Next, (PyObject *, Py_ssize_t *, PyObject **, PyObject **))                             \
    SLOT(void, Py_Initialize, ())                                                                            \
    SLOT(PyObject *, PyModule_Create2, (PyModuleDef *, int))                                                 \
    SLOT(int, PyImport_AppendInittab, (const char *, PyObject *(*)()))                                       \
    SLOT(PyObject *, PyImport_ImportModule, (const char *))                                                  \
    SLOT(PyObject *, PyImport_AddModule, (const char *))                                                     \
    SLOT(PyObject *, PyModule_GetDict, (PyObject *))                                                         \
    SLOT(PyObject *, PyDict_New, ())                                                                         \
    SLOT(void, PyMem_Free, (void *))                                                                         \
    SLOT(void, Py_DecRef, (PyObject *))                                                                      \
    SLOT(PyObject *, Py_BuildValue, (const char *, ...))                                                     \
    SLOT(PyObject *, PyObject_CallMethod, (PyObject *, const char *, const char *, ...))                     \
    SLOT(PyObject *, PyObject_CallFunction, (PyObject *, const char *, ...))                                 \
    SLOT(PyObject *, PyObject_Repr, (PyObject *))                                                            \
    SLOT(void, PyErr_Fetch, (PyObject **, PyObject **, PyObject **))                                         \
    SLOT(void, PyErr_NormalizeException, (PyObject **, PyObject **, PyObject **))                            \
    SLOT(void, PyEval_SetTrace, (int (*)(PyObject *, PyObject *, int, PyObject *), PyObject *))              \
    SLOT(void *, PyThreadState_Get, ())                                                                      \
    SLOT(void *, PyEval_SaveThread, ())                                                                      \
    SLOT(int, PyFrame_GetLineNumber, (PyObject *))

// vxPy_GetVersion, vxPyArg_ParseTuple and so on.
#define RUNEBOOK_DECLARE_SLOT(result, name, arguments) extern result(*vx##name) arguments; // NOLINT: types
RUNEBOOK_PYTHON_SLOTS(RUNEBOOK_DECLARE_SLOT)
#undef RUNEBOOK_DECLARE_SLOT

namespace runebook {

/// What the bridge and the runs need beside the table, from the same library.
#define RUNEBOOK_PYTHON_BRIDGE_FUNCTIONS(FUNCTION)                                                           \
    FUNCTION(void, Py_IncRef, (PyObject *))                                                                  \
    FUNCTION(PyObject *, PyRun_FileExFlags,                                                                  \
             (std::FILE *, const char *, int, PyObject *, PyObject *, int, void *))                          \
    FUNCTION(void, PyErr_SetInterrupt, ())                                                                   \
    FUNCTION(int, PyErr_CheckSignals, ())                                                                    \
    FUNCTION(int, PyErr_ExceptionMatches, (PyObject *))                                                      \
    FUNCTION(PyObject *, PyErr_Occurred, ())                                                                 \
    FUNCTION(void, PyErr_Restore, (PyObject *, PyObject *, PyObject *))                                      \
    FUNCTION(void, PyErr_SetObject, (PyObject *, PyObject *))                                                \
    FUNCTION(void, PyErr_SetString, (PyObject *, const char *))                                              \
    FUNCTION(void, PyErr_WriteUnraisable, (PyObject *))                                                      \
    FUNCTION(PyObject *, PyObject_CallObject, (PyObject *, PyObject *))                                      \
    FUNCTION(PyObject *, PyObject_CallFunctionObjArgs, (PyObject *, ...))                                    \
    FUNCTION(PyObject *, PyObject_GetAttrString, (PyObject *, const char *))                                 \
    FUNCTION(int, PyObject_SetAttrString, (PyObject *, const char *, PyObject *))                            \
    FUNCTION(PyObject *, PyObject_GetIter, (PyObject *))                                                     \
    FUNCTION(void, PyObject_ClearWeakRefs, (PyObject *))                                                     \
    FUNCTION(PyObject *, PyIter_Next, (PyObject *))                                                          \
    FUNCTION(int, PyObject_IsTrue, (PyObject *))                                                             \
    FUNCTION(int, PyCallable_Check, (PyObject *))                                                            \
    FUNCTION(int, PyDict_SetItem, (PyObject *, PyObject *, PyObject *))                                      \
    FUNCTION(int, PyDict_SetItemString, (PyObject *, const char *, PyObject *))                              \
    FUNCTION(int, PyDict_DelItemString, (PyObject *, const char *))                                          \
    FUNCTION(PyObject *, PyDict_GetItemString, (PyObject *, const char *))                                   \
    FUNCTION(PyObject *, PyDict_Copy, (PyObject *))                                                          \
    FUNCTION(Py_ssize_t, PyDict_Size, (PyObject *))                                                          \
    FUNCTION(PyObject *, PyMethod_New, (PyObject *, PyObject *))                                             \
    FUNCTION(PyObject *, PyList_New, (Py_ssize_t))                                                           \
    FUNCTION(int, PyList_SetItem, (PyObject *, Py_ssize_t, PyObject *))                                      \
    FUNCTION(PyObject *, PyTuple_New, (Py_ssize_t))                                                          \
    FUNCTION(int, PyTuple_SetItem, (PyObject *, Py_ssize_t, PyObject *))                                     \
    FUNCTION(PyObject *, PyTuple_GetItem, (PyObject *, Py_ssize_t))                                          \
    FUNCTION(Py_ssize_t, PyTuple_Size, (PyObject *))                                                         \
    FUNCTION(PyObject *, PyLong_FromLongLong, (long long))                                                   \
    FUNCTION(PyObject *, PyLong_FromUnsignedLongLong, (unsigned long long))                                  \
    FUNCTION(long long, PyLong_AsLongLong, (PyObject *))                                                     \
    FUNCTION(unsigned long long, PyLong_AsUnsignedLongLong, (PyObject *))                                    \
    FUNCTION(PyObject *, PyNumber_Index, (PyObject *))                                                       \
    FUNCTION(PyObject *, PyFloat_FromDouble, (double))                                                       \
    FUNCTION(double, PyFloat_AsDouble, (PyObject *))                                                         \
    FUNCTION(PyObject *, PyBool_FromLong, (long))                                                            \
    FUNCTION(PyObject *, PyBytes_FromStringAndSize, (const char *, Py_ssize_t))                              \
    FUNCTION(Py_ssize_t, PyBytes_Size, (PyObject *))                                                         \
    FUNCTION(PyObject *, PyUnicode_DecodeUTF8, (const char *, Py_ssize_t, const char *))                     \
    FUNCTION(PyObject *, PyUnicode_DecodeUTF16, (const char *, Py_ssize_t, const char *, int *))             \
    FUNCTION(Py_ssize_t, PyUnicode_GetLength, (PyObject *))                                                  \
    FUNCTION(const char *, PyUnicode_AsUTF8AndSize, (PyObject *, Py_ssize_t *))                              \
    FUNCTION(PyObject *, PyUnicode_AsEncodedString, (PyObject *, const char *, const char *))                \
    FUNCTION(PyObject *, PyType_FromSpec, (PyType_Spec *))                                                   \
    FUNCTION(PyObject *, PyType_FromSpecWithBases, (PyType_Spec *, PyObject *))                              \
    FUNCTION(PyObject *, PyType_GenericAlloc, (PyTypeObject *, Py_ssize_t))                                  \
    FUNCTION(void *, PyType_GetSlot, (PyTypeObject *, int))                                                  \
    FUNCTION(unsigned long, PyType_GetFlags, (PyTypeObject *))                                               \
    FUNCTION(int, PyType_IsSubtype, (PyTypeObject *, PyTypeObject *))

/// What is used where it is there: older interpreters do without.
#define RUNEBOOK_PYTHON_OPTIONAL_FUNCTIONS(FUNCTION)                                                         \
    FUNCTION(int, PySys_AddAuditHook, (Py_AuditHookFunction, void *))                                        \
    FUNCTION(PyObject *, PyUnicode_FromKindAndData, (int, const void *, Py_ssize_t))

/// Objects of the interpreter, used by address.
#define RUNEBOOK_PYTHON_OBJECTS(OBJECT)                                                                      \
    OBJECT(_Py_NoneStruct)                                                                                   \
    OBJECT(_Py_TrueStruct)                                                                                   \
    OBJECT(_Py_NotImplementedStruct)                                                                         \
    OBJECT(PyFloat_Type)                                                                                     \
    OBJECT(PyBool_Type)

/// Exceptions of the interpreter, which are pointers there.
#define RUNEBOOK_PYTHON_EXCEPTIONS(EXCEPTION)                                                                \
    EXCEPTION(PyExc_AttributeError)                                                                          \
    EXCEPTION(PyExc_IndexError)                                                                              \
    EXCEPTION(PyExc_KeyboardInterrupt)                                                                       \
    EXCEPTION(PyExc_OverflowError)                                                                           \
    EXCEPTION(PyExc_RecursionError)                                                                          \
    EXCEPTION(PyExc_ReferenceError)                                                                          \
    EXCEPTION(PyExc_RuntimeError)                                                                            \
    EXCEPTION(PyExc_SystemExit)                                                                              \
    EXCEPTION(PyExc_TypeError)                                                                               \
    EXCEPTION(PyExc_UnicodeDecodeError)                                                                      \
    EXCEPTION(PyExc_UnicodeEncodeError)                                                                      \
    EXCEPTION(PyExc_ValueError)

/// The second table. Filled together with the first; used only when it is complete.
struct PythonBridgeFunctions {
#define RUNEBOOK_MEMBER(result, name, arguments) result(*name) arguments = nullptr; // NOLINT: types
    RUNEBOOK_PYTHON_BRIDGE_FUNCTIONS(RUNEBOOK_MEMBER)
    RUNEBOOK_PYTHON_OPTIONAL_FUNCTIONS(RUNEBOOK_MEMBER)
#undef RUNEBOOK_MEMBER
#define RUNEBOOK_MEMBER(name) PyObject *name = nullptr;
    RUNEBOOK_PYTHON_OBJECTS(RUNEBOOK_MEMBER)
#undef RUNEBOOK_MEMBER
#define RUNEBOOK_MEMBER(name) PyObject **name = nullptr;
    RUNEBOOK_PYTHON_EXCEPTIONS(RUNEBOOK_MEMBER)
#undef RUNEBOOK_MEMBER
};

extern PythonBridgeFunctions py;

/// Fills both tables from an open library. Missing names leave their slots empty.
void resolvePythonFunctions(void *library);
/// The names that the library did not have and that the program cannot do without; empty when it can start.
QStringList missingPythonFunctions();
/// Empties both tables.
void clearPythonFunctions();

} // namespace runebook
