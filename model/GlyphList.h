#pragma once

#include <QHash>
#include <QString>

/// The glyph list that ships with the program.
namespace runebook::GlyphList {

/// Code point text to glyph name; loaded once.
const QHash<QString, QString> &names();
/// Names of the list that never become production names.
bool isIgnored(QStringView name);

} // namespace runebook::GlyphList
