// The desktop notification seam against a notification server of the test's own on a private session bus: what a
// notice sends for each set of server capabilities (buttons only where the server shows actions, the text escaped
// only where it reads markup), and a click that comes back as our notice's id, while a click on another program's
// notice is not ours.

#include "platform/DesktopNotifications.h"
#include "support/DataTable.h"
#include "support/SessionBus.h"

#include <QDBusConnection>

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");

class NotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList capabilities;
    QStringList received; // "summary|body|actions"
    QList<uint> closed;

public slots:
    QStringList GetCapabilities() { return capabilities; }
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &actions, const QVariantMap &, int)
    {
        received << summary + u'|' + body + u'|' + actions.join(u',');
        return uint(received.size()) + 40;
    }
    void CloseNotification(uint id) { closed << id; }

signals:
    void ActionInvoked(uint id, const QString &actionKey);
};

} // namespace

class TestDesktopNotifications : public QObject
{
    Q_OBJECT

    NotificationServer m_server;
    QDBusConnection m_serverBus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("server"));

private slots:
    void initTestCase()
    {
        QVERIFY(m_serverBus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &m_server,
                                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        QVERIFY(m_serverBus.registerService(kService));
        QVERIFY(DesktopNotifications::serverPresent());
    }

    void notifyAndClick_data()
    {
        columns<QStringList, QString, QString>("capabilities", "button", "sent");
        const QString text = QStringLiteral("Foo & <Bar> has been updated");
        const QStringList both{QStringLiteral("actions"), QStringLiteral("body-markup")};
        row("buttons and markup", both, "Launch",
            "Update Complete|Foo &amp; &lt;Bar&gt; has been updated|default,,view,Launch");
        row("buttons, plain text", QStringList{QStringLiteral("actions")}, "Launch",
            QString(QStringLiteral("Update Complete|") + text + QStringLiteral("|default,,view,Launch")));
        row("a notice without a button is still clickable", both, "",
            "Update Complete|Foo &amp; &lt;Bar&gt; has been updated|default,");
        row("no actions: nothing to click", QStringList(), "Launch",
            QString(QStringLiteral("Update Complete|") + text + u'|'));
    }

    void notifyAndClick()
    {
        auto [capabilities, button, sent] = fetch<QStringList, QString, QString>("capabilities", "button", "sent");
        m_server.capabilities = capabilities;
        m_server.received.clear();
        m_server.closed.clear();
        DesktopNotifications notifications;
        SystemNotice notice{
            7, QStringLiteral("Update Complete"), QStringLiteral("Foo & <Bar> has been updated"), button, {}};
        QList<std::pair<quint32, QString>> clicks;
        connect(&notifications, &DesktopNotifications::clicked, this, [&clicks](quint32 id, const QString &action) {
            clicks.append({id, action});
        });
        bool shown = false;
        connect(&notifications, &DesktopNotifications::shown, this, [&shown] { shown = true; });
        notifications.notify(notice);
        QVERIFY(QTest::qWaitFor([&] { return shown; }));
        QCOMPARE(m_server.received, QStringList{sent});
        QCOMPARE(notifications.capabilities(), capabilities);

        emit m_server.ActionInvoked(99, QStringLiteral("default")); // another program's notice, delivered first
        emit m_server.ActionInvoked(41, button.isEmpty() ? QStringLiteral("default") : QStringLiteral("view"));
        QVERIFY(QTest::qWaitFor([&] { return !clicks.isEmpty(); }));
        QCOMPARE(clicks.size(), 1);
        QCOMPARE(clicks.constFirst().first, 7u);

        notifications.closeAll();
        QVERIFY(QTest::qWaitFor([&] { return !m_server.closed.isEmpty(); }));
        QCOMPARE(m_server.closed, QList<uint>{41});
    }
};

VELMORA_SESSION_BUS_TEST_MAIN(TestDesktopNotifications)
#include "TestDesktopNotifications.moc"
