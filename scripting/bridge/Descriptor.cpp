#include "scripting/bridge/Descriptor.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace runebook::bridge {

using namespace Qt::StringLiterals;

namespace {

Descriptor &descriptor(PyObject *self)
{
    return *reinterpret_cast<Descriptor *>(self);
}

PyObject *refuseKeywords(PyObject *self)
{
    const PythonRef name(py.PyObject_GetAttrString(self, "__name__"));
    QString text;
    if (!name || !readText(name.get(), text))
        return nullptr;
    return raise(*py.PyExc_TypeError, u"%1 takes no keyword arguments"_s.arg(text));
}

PyObject *callFast(PyObject *self, PyObject *const *arguments, std::size_t count, PyObject *keywords)
{
    if (Q_UNLIKELY(keywords) && py.PyTuple_Size(keywords) > 0)
        return refuseKeywords(self);
    return descriptor(self).call(self, arguments,
                                 static_cast<Py_ssize_t>(count & ~python::kVectorCallOffset));
}

PyObject *callWithTuple(PyObject *self, PyObject *tuple, PyObject *keywords)
{
    if (keywords && py.PyDict_Size(keywords) > 0)
        return refuseKeywords(self);
    return guarded<PyObject *>(nullptr, [&] {
        std::vector<PyObject *> arguments;
        for (Py_ssize_t place = 0; place < py.PyTuple_Size(tuple); ++place)
            arguments.push_back(py.PyTuple_GetItem(tuple, place));
        return descriptor(self).call(self, arguments.data(), static_cast<Py_ssize_t>(arguments.size()));
    });
}

void deallocate(PyObject *self)
{
    PyTypeObject *type = self->ob_type;
    reinterpret_cast<void (*)(void *)>(py.PyType_GetSlot(type, python::kSlotFree))(self);
    vxPy_DecRef(reinterpret_cast<PyObject *>(type));
}

/// 3.8 knows the flag but not the member that goes with it.
bool knowsVectorCalls()
{
    constexpr int kFirst = 9;
    const char *minor = std::strchr(vxPy_GetVersion(), '.');
    return minor && std::atoi(minor + 1) >= kFirst;
}

} // namespace

PyTypeObject *makeDescriptorType(const char *name, std::size_t size, std::vector<PyType_Slot> slots)
{
    static PyMemberDef members[] = {
        {"__vectorcalloffset__", python::kMemberSize, offsetof(Descriptor, vectorCall), python::kReadOnly,
         nullptr},
        {nullptr, 0, 0, 0, nullptr},
    };
    unsigned int flags = python::kDefaultTypeFlags | python::kMethodDescriptor;
    slots.push_back({python::kSlotDealloc, reinterpret_cast<void *>(deallocate)});
    slots.push_back({python::kSlotCall, reinterpret_cast<void *>(callWithTuple)});
    if (knowsVectorCalls()) {
        flags |= python::kHasVectorCall;
        slots.push_back({python::kSlotMembers, members});
    }
    slots.push_back({0, nullptr});
    PyType_Spec spec {name, static_cast<int>(size), 0, flags, slots.data()};
    return reinterpret_cast<PyTypeObject *>(py.PyType_FromSpec(&spec));
}

PyObject *makeDescriptor(PyTypeObject *type, Descriptor::Call call)
{
    PyObject *made = type ? py.PyType_GenericAlloc(type, 0) : nullptr;
    if (made) {
        descriptor(made).vectorCall = callFast;
        descriptor(made).call = call;
    }
    return made;
}

} // namespace runebook::bridge
