#pragma once

#include "scripting/python/PythonABI.h"

/// The two built-in modules that take the place of sys.stdout and sys.stderr. Importing one installs it.
PyObject *PyInit_TesselOut();
PyObject *PyInit_TesselErr();

namespace runebook {

/// Hands over what other threads have written so far, on the main thread.
void deliverPendingOutput();

} // namespace runebook
