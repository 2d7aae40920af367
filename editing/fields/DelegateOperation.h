#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QObject>

namespace runebook {

/// The invokable operation of that signature which an optional delegate has; invalid when it has none, or
/// when there is no delegate.
inline QMetaMethod delegateOperation(const QObject *delegate, const char *signature)
{
    if (!delegate)
        return {};
    const QMetaObject *meta = delegate->metaObject();
    const int index = meta->indexOfMethod(QMetaObject::normalizedSignature(signature).constData());
    return index < 0 ? QMetaMethod() : meta->method(index);
}

} // namespace runebook
