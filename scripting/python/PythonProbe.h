#pragma once

#include "platform/Error.h"

#include <QString>

namespace runebook::PythonProbe {

/// Whether the interpreter in \a library, started with \a prefix as its home, comes up. Asked in a process of
/// its own, since an interpreter without its standard library ends the process that starts it. A good answer
/// is kept for as long as library and standard library stay as they are; a bad one is asked again each time.
[[nodiscard]] bool comesUp(const QString &library, const QString &prefix, Error *error = nullptr);

/// Ends waiting for an answer after so many milliseconds; 20,000 unless changed.
void setTimeLimit(int milliseconds);

} // namespace runebook::PythonProbe
