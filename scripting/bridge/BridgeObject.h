#pragma once

#include "scripting/bridge/BridgedClass.h"
#include "scripting/python/PythonValue.h"

class QWidget;

namespace runebook::bridge {

/// An object of the program as scripts see it: the base of all bridged classes, and of the classes that
/// scripts derive from NSObject, which have nothing behind them.
struct BridgeObject {
    PyObject head;
    const BridgedClass *bridgedClass; ///< null for a class of a script
    bool isAllocated; ///< came from alloc(), init() has not been called yet
    const QObject *listedAs; ///< the key under which it is found again; never followed
    PyObject *weakReferences; ///< the interpreter's own list
    Instance instance;
};

/// The Python type NSObject, made on first call; null with an error set when that fails.
PyTypeObject *objectType();
/// A type that \a spec describes, on top of \a base where one is given, whose class is the one of all classes
/// of the program ("runebook.Class"). Null with an error set when the interpreter refuses.
PyTypeObject *makeClass(PyType_Spec &spec, PyTypeObject *base);
/// Whether \a object is of \a type or of a class derived from it.
inline bool isInstance(PyObject *object, PyTypeObject *type)
{
    return object->ob_type == type || py.PyType_IsSubtype(object->ob_type, type) != 0;
}
/// True for objects of the bridge.
bool isBridgeObject(PyObject *object);
/// A new object of \a type around \a instance.
PyObject *makeObject(PyTypeObject *type, const BridgedClass *bridgedClass, Instance instance,
                     bool isAllocated = false);

/// Puts \a instance behind \a object, which then is what scripts get for its QObject.
void adopt(BridgeObject &object, Instance instance);

/// A QObject of the program; None for null. The same Python object as long as one is alive.
PyObject *wrapObject(QObject *object);
/// A record or value of the class \a bridgedClass.
PyObject *wrapValue(const BridgedClass &bridgedClass, std::shared_ptr<void> &&value);
inline PyObject *wrapValue(const BridgedClass &bridgedClass, const std::shared_ptr<void> &value)
{
    return wrapValue(bridgedClass, std::shared_ptr<void>(value));
}
/// Has \a met called for each window that scripts meet; it answers false with a Python error set when it
/// fails.
void setWindowObserver(bool (*met)(const QWidget &window));
/// Where the C++ object is; null with ReferenceError set when it is gone.
void *addressOf(BridgeObject &object);

} // namespace runebook::bridge
