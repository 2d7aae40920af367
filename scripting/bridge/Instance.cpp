#include "scripting/bridge/Instance.h"

namespace runebook::bridge {

Instance ownedByScripts(QObject *made)
{
    const auto end = [pointer = QPointer(made)](void *) {
        if (pointer && !pointer->parent())
            pointer->deleteLater();
    };
    return {std::shared_ptr<void>(nullptr, end), made};
}

} // namespace runebook::bridge
