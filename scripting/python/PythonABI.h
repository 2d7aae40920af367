#pragma once

#include <cstddef>
#include <sys/types.h>

// The few structures of Python's stable binary interface that the program hands to the interpreter or looks
// into. They are declared here because the program is built without Python and chooses one when it runs.
// The layouts hold for every 3.x up to 3.13 that was not built without the global lock.

using Py_ssize_t = ssize_t;

struct PyObject {
    Py_ssize_t ob_refcnt;
    struct PyTypeObject *ob_type;
};

using PyCFunction = PyObject *(*)(PyObject *self, PyObject *arguments);
using destructor = void (*)(PyObject *);
using traverseproc = int (*)(PyObject *, int (*)(PyObject *, void *), void *);
using Py_AuditHookFunction = int (*)(const char *event, PyObject *arguments, void *data);

struct PyMethodDef {
    const char *ml_name;
    PyCFunction ml_meth;
    int ml_flags;
    const char *ml_doc;
};

struct PyMemberDef {
    const char *name;
    int type;
    Py_ssize_t offset;
    int flags;
    const char *doc;
};

struct PyGetSetDef {
    const char *name;
    PyObject *(*get)(PyObject *self, void *closure);
    int (*set)(PyObject *self, PyObject *value, void *closure);
    const char *doc;
    void *closure;
};

struct PyModuleDef_Base {
    PyObject ob_base;
    PyObject *(*m_init)();
    Py_ssize_t m_index;
    PyObject *m_copy;
};

struct PyModuleDef {
    PyModuleDef_Base m_base;
    const char *m_name;
    const char *m_doc;
    Py_ssize_t m_size;
    PyMethodDef *m_methods;
    void *m_slots;
    traverseproc m_traverse;
    int (*m_clear)(PyObject *);
    void (*m_free)(void *);
};

struct PyType_Slot {
    int slot;
    void *pfunc;
};

struct PyType_Spec {
    const char *name;
    int basicsize;
    int itemsize;
    unsigned int flags;
    PyType_Slot *slots;
};

namespace runebook::python {

constexpr int kApiVersion = 1013; ///< what PyModule_Create2 is told

// Start symbols and flags of functions
constexpr int kSingleInput = 256;
constexpr int kFileInput = 257;
constexpr int kVarArgs = 0x0001;
constexpr int kNoArgs = 0x0004;
constexpr int kOneArg = 0x0008;

// Flags of types
constexpr unsigned int kBaseType = 1U << 10;
constexpr unsigned int kHasVectorCall = 1U << 11;
constexpr unsigned int kMethodDescriptor = 1U << 17;
constexpr unsigned int kDefaultTypeFlags = 1U << 18;
constexpr unsigned long kLongSubclass = 1UL << 24;
constexpr unsigned long kListSubclass = 1UL << 25;
constexpr unsigned long kTupleSubclass = 1UL << 26;
constexpr unsigned long kBytesSubclass = 1UL << 27;
constexpr unsigned long kUnicodeSubclass = 1UL << 28;
constexpr unsigned long kDictSubclass = 1UL << 29;
constexpr unsigned long kTypeSubclass = 1UL << 31;

// Slots of types
constexpr int kSlotCall = 50;
constexpr int kSlotDealloc = 52;
constexpr int kSlotDescrGet = 54;
constexpr int kSlotDescrSet = 55;
constexpr int kSlotDoc = 56;
constexpr int kSlotHash = 59;
constexpr int kSlotMethods = 64;
constexpr int kSlotNew = 65;
constexpr int kSlotRepr = 66;
constexpr int kSlotRichCompare = 67;
constexpr int kSlotMembers = 72;
constexpr int kSlotGetSet = 73;
constexpr int kSlotFree = 74;

/// How objects are called without a tuple: a flag may stand in the count.
using VectorCall = PyObject *(*)(PyObject *self, PyObject *const *arguments, std::size_t count,
                                 PyObject *keywords);
constexpr std::size_t kVectorCallOffset = std::size_t {1} << (8 * sizeof(std::size_t) - 1);

// Members of types
constexpr int kMemberSize = 19;
constexpr int kReadOnly = 1;

// Comparisons that tp_richcompare is asked for
constexpr int kEqual = 2;
constexpr int kNotEqual = 3;

} // namespace runebook::python
