#pragma once

#include <QVariant>

/// The open files and their windows, kept in the user's defaults ("VXOpenWindows") from one run to the next.
namespace runebook::Session {

/// The documents with a file that are open now, the frontmost last.
QVariantList capture();
void store(const QVariantList &windows);
/// Opens what was stored, as far as it is still there; what is not is passed over. Answers the number of
/// windows opened.
int restore();

} // namespace runebook::Session
