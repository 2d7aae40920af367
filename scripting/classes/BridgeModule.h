#pragma once

#include "scripting/python/PythonABI.h"

class QObject;
class QString;

/// The built-in module that the Python side of the bridge stands on. To be registered before the interpreter
/// starts, and so are the classes and objects that other rooms add to those of this one.
PyObject *PyInit_runebook();

namespace runebook {

inline constexpr const char *kBridgeModuleName = "_runebook";

/// Lets scripts have what \a object answers: an object there is one of, under a name that the Python side
/// knows.
void registerSharedObject(const QString &name, QObject *(*object)());

} // namespace runebook
