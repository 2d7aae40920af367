#pragma once

#include <QString>

/// What the program has to say when it starts.
namespace runebook::StartWarnings {

/// In front of the front window: that the settings could not be read, and what became of them. Nothing when
/// they could.
void warnOfDamagedDefaults();
/// In a window of its own, which holds nobody up.
void showPythonWarning(const QString &message, const QString &advice);

} // namespace runebook::StartWarnings
