#pragma once

#include <QObject>
#include <QVariant>

class VXScriptingHandler;

Q_MOC_INCLUDE("scripting/menu/VXScriptingHandler.h")

namespace runebook {

/// Operations of the handler of scripts whose C++ forms scripts cannot call as they are.
class HandlerOperations : public QObject
{
    Q_OBJECT
public:
    /// The handle of the open library as a number, or None.
    Q_INVOKABLE QVariant pythonLibForPath(VXScriptingHandler *handler, const QString &path) const;
};

/// Makes them known to the bridge, with \a handlerClass and the one object of it.
void registerHandlerOperations(const QMetaObject &handlerClass, QObject *(*sharedHandler)());

} // namespace runebook
