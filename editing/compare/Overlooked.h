#pragma once

#include "editing/compare/CompareOptions.h"

#include <QString>

namespace runebook {

// What the compare window overlooks, as the settings have it.

CompareOptions overlookedOptions();
/// "Overlooked: case, Description"; null where nothing is.
QString overlookedText();
/// Has a field, named by its key, overlooked or looked at again.
void setOverlooked(const QString &key, bool isOverlooked);

} // namespace runebook
