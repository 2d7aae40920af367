#pragma once

#include "scripting/bridge/BridgeTypes.h"
#include "scripting/bridge/Selectors.h"

#include <QMetaMethod>

namespace runebook::bridge {

/// One parameter of an operation. An out parameter is a pointer in C++; scripts pass None or a first value
/// for it and get it back beside the result.
struct Parameter {
    QMetaType type; ///< of the value itself, also for an out parameter
    const BridgeType *bridge;
    QByteArray name;
    bool isOut;
    bool mayBeNone; ///< for objects: no object is an answer as well
};

/// One function behind an operation; there are several where C++ overloads it.
struct Method {
    /// \a extension: the object whose function it is, when that is another one than it is called on.
    explicit Method(const QMetaMethod &method, QObject *extension = nullptr);

    /// The names of the parameters, those of out parameters too.
    QList<QByteArray> parameterNames() const;
    int inputs() const { return static_cast<int>(parameters.size()); }

    QByteArray name;
    QObject *extension;
    QMetaType sharedTarget; ///< what an extension takes its object as, where it is no plain pointer
    int relativeIndex;
    QMetaType result;
    const BridgeType *resultBridge;
    std::vector<Parameter> parameters; ///< without the one for an error, and an extension's first
    bool canFail; ///< has an out parameter for an error at its end
    bool isOfClass; ///< an extension's that needs no object
    bool isUsable; ///< every type can cross
    QByteArray signature;
};

/// All functions of one name in one class.
struct MethodGroup {
    const BridgedClass *owner;
    QByteArray name;
    bool needsPreparation; ///< see setPreparation()
    std::vector<Method> methods;
};

/// Something is done before an operation of certain classes is called: what the operation looks at may have
/// to be brought up to date. Before any object of such a class is met.
struct Preparation {
    bool (*isNeeded)(const QMetaObject &meta) = nullptr; ///< asked once for each class
    void (*prepare)() = nullptr;
};
void setPreparation(const Preparation &preparation);
/// Whether operations of \a owner are prepared.
bool needsPreparation(const BridgedClass &owner);

/// What help() and listings of a class ask an attribute: its "__name__", "__doc__" and "__signature__", and
/// "details", a map of what is known of it. \a details makes the map.
template <QVariantMap (*details)(PyObject *self)> PyGetSetDef *descriptions();
/// The answer of the Python side, told \a what is asked ("doc", "signature").
PyObject *described(PyObject *self, const char *what);

/// The attribute of a class that calls an operation under one of its selectors. New reference.
PyObject *makeOperation(const MethodGroup &group, const Selector &selector);

template <QVariantMap (*details)(PyObject *self)> PyGetSetDef *descriptions()
{
    static PyGetSetDef table[] = {
        {"__name__",
         [](PyObject *self, void *) {
             return guarded<PyObject *>(nullptr, [self] {
                 return pythonText(details(self).value(QStringLiteral("name")).toString());
             });
         },
         nullptr, nullptr, nullptr},
        {"details",
         [](PyObject *self, void *) {
             return guarded<PyObject *>(nullptr, [self] { return variantToPython(details(self)); });
         },
         nullptr, nullptr, nullptr},
        {"__doc__", [](PyObject *self, void *) { return described(self, "doc"); }, nullptr, nullptr, nullptr},
        {"__signature__", [](PyObject *self, void *) { return described(self, "signature"); }, nullptr,
         nullptr, nullptr},
        {nullptr, nullptr, nullptr, nullptr, nullptr},
    };
    return table;
}

} // namespace runebook::bridge
