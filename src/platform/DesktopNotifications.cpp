#include "platform/DesktopNotifications.h"

#include "platform/Log.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
const QString kDefaultAction = QStringLiteral("default");
const QString kButtonAction = QStringLiteral("view");

QDBusMessage call(const QString &method)
{
    return QDBusMessage::createMethodCall(kService, kPath, kInterface, method);
}

} // namespace

bool DesktopNotifications::serverPresent(const QDBusConnection &bus)
{
    if (!bus.isConnected() || !bus.interface()) {
        return false;
    }
    if (bus.interface()->isServiceRegistered(kService)) {
        return true;
    }
    const QDBusReply<QStringList> activatable = bus.interface()->call(QStringLiteral("ListActivatableNames"));
    return activatable.isValid() && activatable.value().contains(kService);
}

DesktopNotifications::DesktopNotifications(const QDBusConnection &bus, QObject *parent) : QObject(parent), m_bus(bus)
{
    m_bus.connect(kService, kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                  SLOT(onActionInvoked(uint, QString)));
    // Notices wait until the server has said whether it shows buttons and markup.
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call(QStringLiteral("GetCapabilities"))), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *answer) {
        const QDBusPendingReply<QStringList> reply = *answer;
        if (reply.isError()) {
            vlLog(QStringLiteral("notification server: %1").arg(reply.error().message()));
        } else {
            m_capabilities = reply.value();
        }
        m_ready = true;
        const QList<SystemNotice> waiting = std::exchange(m_waiting, {});
        for (const SystemNotice &notice : waiting) {
            send(notice);
        }
        answer->deleteLater();
    });
}

void DesktopNotifications::notify(const SystemNotice &notice)
{
    if (m_ready) {
        send(notice);
    } else {
        m_waiting.append(notice);
    }
}

void DesktopNotifications::send(const SystemNotice &notice)
{
    QStringList actions;
    if (m_capabilities.contains(QStringLiteral("actions"))) {
        actions << kDefaultAction << QString();
        if (!notice.button.isEmpty()) {
            actions << kButtonAction << notice.button;
        }
    }
    // A server that reads markup would take "<" or "&" in an app's name for a tag.
    const QString body = m_capabilities.contains(QStringLiteral("body-markup")) ? notice.informativeText.toHtmlEscaped()
                                                                                : notice.informativeText;
    QDBusMessage message = call(QStringLiteral("Notify"));
    message << QStringLiteral("Velmora Desktop") << quint32(0) << QStringLiteral("velmora") << notice.title << body
            << actions << QVariantMap() << qint32(-1);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, id = notice.id](QDBusPendingCallWatcher *answer) {
        const QDBusPendingReply<quint32> reply = *answer;
        if (reply.isError()) {
            vlLog(QStringLiteral("notification server: %1").arg(reply.error().message()));
        } else {
            m_noticeOfServerId.insert(reply.value(), id);
            emit shown(id);
        }
        answer->deleteLater();
    });
}

void DesktopNotifications::closeAll()
{
    for (auto it = m_noticeOfServerId.cbegin(); it != m_noticeOfServerId.cend(); ++it) {
        QDBusMessage message = call(QStringLiteral("CloseNotification"));
        message << it.key();
        m_bus.asyncCall(message);
    }
    m_noticeOfServerId.clear();
}

void DesktopNotifications::onActionInvoked(uint serverId, const QString &actionKey)
{
    // The server tells every program of every click: only ours are taken.
    const auto found = m_noticeOfServerId.constFind(serverId);
    if (found != m_noticeOfServerId.cend()) {
        emit clicked(*found, actionKey);
    }
}
