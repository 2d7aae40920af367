#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

namespace runebook {

/// Passes named notifications from whoever posts them to whoever listens, for the names that scripts and
/// folders share. Inside a folder a signal is the better choice.
class NotificationCenter : public QObject
{
    Q_OBJECT
public:
    static NotificationCenter &defaultCenter();

    /// Tells every listener at once, on the calling thread. \a object is what the notification is about.
    Q_INVOKABLE void postNotificationNameObject(const QString &name, QObject *object,
                                                const QVariantMap &userInfo = {});

    /// Calls \a slot for each notification called \a name until \a context is destroyed.
    template <typename Slot> QMetaObject::Connection observe(const QString &name, QObject *context, Slot slot)
    {
        return connect(this, &NotificationCenter::posted, context,
                       [name, slot](const QString &posted, QObject *object, const QVariantMap &userInfo) {
                           if (posted == name)
                               slot(object, userInfo);
                       });
    }

Q_SIGNALS:
    void posted(const QString &name, QObject *object, const QVariantMap &userInfo);
};

} // namespace runebook
