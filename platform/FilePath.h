#pragma once

#include <QString>

namespace runebook {

/// The path that \a url stands for: documents and scripts name files by path or by "file:" URL alike.
QString pathFromURL(const QString &url);

} // namespace runebook
