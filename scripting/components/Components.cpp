#include "scripting/components/Components.h"

#include "scripting/bridge/BridgeTypes.h"
#include "scripting/components/CodeOperations.h"
#include "scripting/components/ScriptDelegate.h"
#include "scripting/components/TabBarOperations.h"
#include "update/Appcast.h"

namespace runebook {

using namespace bridge;

void registerComponents()
{
    registerCodeOperations();
    registerTabBarOperations();
    BridgedClass::registerClass(SUAppcast::staticMetaObject, [] { return ownedByScripts(new SUAppcast); });
    BridgedClass::registerClass(SUAppcastItem::staticMetaObject,
                                [] { return ownedByScripts(new SUAppcastItem); });
    setDelegateMaker(&ScriptDelegate::forObject);
}

} // namespace runebook
