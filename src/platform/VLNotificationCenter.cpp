#include "platform/VLNotificationCenter.h"

VLNotificationCenter &VLNotificationCenter::defaultCenter()
{
    static VLNotificationCenter center;
    return center;
}

void VLNotificationCenter::post(const QString &name, const QVariant &object)
{
    emit posted(name, object);
}

QMetaObject::Connection VLNotificationCenter::subscribe(const QString &name, const QObject *context,
                                                        std::function<void(const QVariant &object)> listener)
{
    return connect(this, &VLNotificationCenter::posted, context,
                   [name, listener = std::move(listener)](const QString &posted, const QVariant &object) {
                       if (posted == name) {
                           listener(object);
                       }
                   });
}

void VLNotificationCenter::unsubscribe(const QMetaObject::Connection &connection)
{
    QObject::disconnect(connection);
}
