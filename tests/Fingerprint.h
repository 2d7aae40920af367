#pragma once

#include <QCryptographicHash>
#include <QStringList>

namespace runebook {

/// Changes with every word and with their order: for lists that a test would only repeat.
inline QByteArray fingerprintOf(const QStringList &words)
{
    return QCryptographicHash::hash(words.join(u'|').toUtf8(), QCryptographicHash::Md5).toHex();
}

} // namespace runebook
