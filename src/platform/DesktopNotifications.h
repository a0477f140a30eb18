#pragma once

// The desktop's notification server (org.freedesktop.Notifications on the session bus): a notice with its action
// button, and the click on it. Calls never wait for the server: a notice's server id arrives later, and a click on
// it comes as clicked() with our own notice id. Lives on the thread that made it.

#include "platform/UserFeedback.h"

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QStringList>

class DesktopNotifications : public QObject
{
    Q_OBJECT

public:
    // Whether bus has a notification server running or one it can start.
    static bool serverPresent(const QDBusConnection &bus = QDBusConnection::sessionBus());

    explicit DesktopNotifications(const QDBusConnection &bus = QDBusConnection::sessionBus(),
                                  QObject *parent = nullptr);

    void notify(const SystemNotice &notice);
    // Takes every notice shown by this object off the screen.
    void closeAll();
    // The server's answer to GetCapabilities ("actions", "body-markup", ...); empty until it has answered.
    QStringList capabilities() const { return m_capabilities; }

signals:
    // The user clicked notice id: its body ("default") or its button ("view").
    void clicked(quint32 id, const QString &action);
    // The server has answered a notify() call: the notice is on the screen.
    void shown(quint32 id);

private slots:
    void onActionInvoked(uint serverId, const QString &actionKey);

private:
    void send(const SystemNotice &notice);

    QDBusConnection m_bus;
    bool m_ready = false;
    QStringList m_capabilities;
    QList<SystemNotice> m_waiting;
    // The server's ids of our notices, and ours of theirs.
    QHash<quint32, quint32> m_noticeOfServerId;
};
