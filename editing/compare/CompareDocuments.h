#pragma once

#include "document/VXDocument.h"

#include <functional>

class VXCompareDataWindow;

namespace runebook {

/// Where compareDocuments() finds the program's one compare window; without it a window is made on first use.
void setCompareWindowProvider(std::function<VXCompareDataWindow *()> provider);

/// Shows two open documents in the compare window. Those in \a temporary were opened for this alone: they are
/// closed with the window unless somebody has edited them.
void compareDocuments(VXDocument &left, VXDocument &right, const QList<VXDocument *> &temporary);

} // namespace runebook
