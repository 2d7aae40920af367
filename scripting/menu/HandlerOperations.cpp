#include "scripting/menu/HandlerOperations.h"

#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/BridgeModule.h"
#include "scripting/menu/InterpreterStart.h"

namespace runebook {

using namespace Qt::StringLiterals;
using bridge::BridgedClass;

QVariant HandlerOperations::pythonLibForPath(VXScriptingHandler *, const QString &path) const
{
    void *library = InterpreterStart::openLibrary(path);
    return library ? QVariant::fromValue(reinterpret_cast<quint64>(library)) : QVariant();
}

void registerHandlerOperations(const QMetaObject &handlerClass, QObject *(*sharedHandler)())
{
    static HandlerOperations handlers;
    BridgedClass::registerExtension(handlerClass, &handlers);
    BridgedClass::registerClass(handlerClass, [sharedHandler] {
        return bridge::Instance {nullptr, sharedHandler()};
    });
    registerSharedObject(u"scriptingHandler"_s, sharedHandler);
}

} // namespace runebook
