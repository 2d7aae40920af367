#pragma once

#include "scripting/bridge/Operation.h"

#include <QMetaProperty>

namespace runebook::bridge {

/// The attribute for a property: read and written as a value; it can be called as well.
PyObject *makeProperty(const BridgedClass &owner, const QMetaProperty &property);
/// The attribute that sets a property when it is called with a value.
PyObject *makeSetter(const BridgedClass &owner, const QMetaProperty &property);

} // namespace runebook::bridge
