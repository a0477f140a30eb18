#pragma once

// The process-wide notification centre: parts of the program tell each other about events by name
// ("VLAppScannerFinished", ...) with one optional object, without knowing who listens.
//
// A listener runs on the thread of its context object: at once when the event is posted on that thread,
// otherwise from that thread's event loop. A listener goes away with its context object.

#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

class VLNotificationCenter : public QObject
{
    Q_OBJECT

public:
    static VLNotificationCenter &defaultCenter();

    void post(const QString &name, const QVariant &object = QVariant());

    QMetaObject::Connection subscribe(const QString &name, const QObject *context,
                                      std::function<void(const QVariant &object)> listener);
    static void unsubscribe(const QMetaObject::Connection &connection);

signals:
    void posted(const QString &name, const QVariant &object);

private:
    VLNotificationCenter() = default;
};
