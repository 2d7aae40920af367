#pragma once

#include "scripting/bridge/Operation.h"

namespace runebook::bridge {

/// Lets classes be made from their meta-objects: a Python type with one attribute for each property and each
/// selector of an operation. Before the first class is asked for.
void setUpClasses();
/// The functions that scripts can call on a class, those of its bases left out.
std::vector<Method> methodsOf(const BridgedClass &made);

} // namespace runebook::bridge
