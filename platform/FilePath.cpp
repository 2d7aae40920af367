#include "platform/FilePath.h"

#include <QUrl>

namespace runebook {

using namespace Qt::StringLiterals;

QString pathFromURL(const QString &url)
{
    return url.startsWith("file:"_L1) ? QUrl(url).toLocalFile() : url;
}

} // namespace runebook
