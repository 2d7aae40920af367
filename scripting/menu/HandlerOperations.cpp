#include "scripting/menu/HandlerOperations.h"

#include "scripting/bridge/BridgedClass.h"
#include "scripting/classes/BridgeModule.h"

namespace runebook {

using namespace Qt::StringLiterals;
using bridge::BridgedClass;

QVariant HandlerOperations::pythonLibForPath(VXScriptingHandler *handler, const QString &path) const
{
    void *library = handler->pythonLibForPath(path);
    return library ? QVariant::fromValue(reinterpret_cast<quint64>(library)) : QVariant();
}

void registerHandlerOperations()
{
    static HandlerOperations handlers;
    BridgedClass::registerExtension(VXScriptingHandler::staticMetaObject, &handlers);
    BridgedClass::registerClass(VXScriptingHandler::staticMetaObject, [] {
        return bridge::Instance {nullptr, VXScriptingHandler::sharedHandler()};
    });
    registerSharedObject(u"scriptingHandler"_s,
                         []() -> QObject * { return VXScriptingHandler::sharedHandler(); });
}

} // namespace runebook
