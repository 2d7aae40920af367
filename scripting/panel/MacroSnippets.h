#pragma once

#include <QVariantList>

namespace runebook {

/// The snippets of the property list at \a path, in order: a map with "code" and "title" for each element
/// that is a map; texts only. Empty when the file is missing, unreadable, no list, or larger than 16 MB. No
/// more than 2,000: nobody finds one among more, and a menu of them would take seconds to open.
QVariantList snippetsOfFile(const QString &path);
/// The same for the content of such a file.
QVariantList snippetsOfPropertyList(const QByteArray &bytes);

/// The title under which a snippet is listed: its own, or the first line of its code. Empty for one that is
/// to be skipped: without code, or with a title shorter than two characters.
QString titleOfSnippet(const QVariantMap &snippet);

} // namespace runebook
