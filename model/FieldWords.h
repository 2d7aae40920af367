#pragma once

#include <QStringList>

namespace runebook {

// The words that a field is usually filled with.

QStringList categoryWords();
QStringList subCategoryWords();
QStringList scriptWords();
/// "other" among them, which people see and files do not get.
QStringList caseWords();
QStringList directionWords();

} // namespace runebook
