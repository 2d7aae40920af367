#include "platform/NotificationCenter.h"

namespace runebook {

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::postNotificationNameObject(const QString &name, QObject *object,
                                                    const QVariantMap &userInfo)
{
    Q_EMIT posted(name, object, userInfo);
}

} // namespace runebook
