#include "scripting/classes/NewObject.h"

#include "scripting/bridge/BridgeTypes.h"

namespace runebook::bridge {

static PyObject *newObjectToPython(QMetaType, const void *data)
{
    QObject *object = static_cast<const NewObject *>(data)->object;
    const BridgedClass *bridged = BridgedClass::forMetaObject(*object->metaObject());
    return bridged ? makeObject(bridged->type(), bridged, ownedByScripts(object)) : nullptr;
}

void registerNewObjects()
{
    registerType(QMetaType::fromType<NewObject>(), {newObjectToPython, nullptr});
}

} // namespace runebook::bridge
