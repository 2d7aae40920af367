#pragma once

#include "scripting/python/PythonValue.h"

namespace runebook::bridge {

/// What the attributes of classes begin with that the interpreter calls: operations, properties and setters.
/// Made by makeDescriptor(); a type of descriptors adds its own members behind.
struct Descriptor {
    /// Called with what stands in front, the object as a rule, at the first place. The arguments are
    /// borrowed.
    using Call = PyObject *(*)(PyObject *self, PyObject *const *arguments, Py_ssize_t count);

    PyObject head;
    python::VectorCall vectorCall; ///< what interpreters from 3.9 on go by, without a tuple for each call
    Call call;
};

/// A type of method descriptors: "info.name()" calls the attribute with the object in front, without binding
/// it first. \a name as "module.name"; \a size of the structure in bytes; \a slots beside those for calling
/// and for freeing, which the type has of itself. Null with an error set when the interpreter refuses.
PyTypeObject *makeDescriptorType(const char *name, std::size_t size, std::vector<PyType_Slot> slots);
/// A new descriptor of \a type, its members behind the first empty; null with an error set when there is no
/// memory.
PyObject *makeDescriptor(PyTypeObject *type, Descriptor::Call call);

} // namespace runebook::bridge
