#pragma once

#include "scripting/python/PythonABI.h"

class QObject;

/// The built-in module that the Python side of the bridge stands on. To be registered before the interpreter
/// starts.
PyObject *PyInit_runebook();

namespace runebook {

inline constexpr const char *kBridgeModuleName = "_runebook";

} // namespace runebook
