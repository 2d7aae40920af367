#pragma once

#include <QVariant>

/// The open files and their windows, kept in the user's defaults ("VXOpenWindows") from one run to the next.
namespace runebook::Session {

/// The documents with a file that are open now, the frontmost last.
QVariantList capture();
void store(const QVariantList &windows);
/// Opens \a windows, as far as their files are still there. Answers the number of windows opened.
int open(const QVariantList &windows);
/// Opens what was stored.
int restore();

} // namespace runebook::Session
