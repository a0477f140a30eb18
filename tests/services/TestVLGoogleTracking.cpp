// Analytics hits as the service's collector receives them, and the switch that turns them off.

#include "platform/VLSettings.h"
#include "services/VLGoogleTracking.h"
#include "support/ServiceProcess.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QJsonObject>

class TestVLGoogleTracking : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;

    QStringList receivedBodies()
    {
        VLGoogleTracking::waitForPendingHits(30000);
        QByteArray output;
        if (m_service.runCommand({QStringLiteral("hits")}, &output) != 0) {
            return {QStringLiteral("the service's hits command failed")};
        }
        QStringList bodies;
        for (const QByteArray &line : output.split('\n')) {
            if (!line.isEmpty()) {
                bodies << QJsonDocument::fromJson(line).object().value(QStringLiteral("body")).toString();
            }
        }
        return bodies;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        QVERIFY(VLSettings().setValue(QString::fromLatin1(SettingKey::analyticsHost), m_service.baseUrl()));
    }

    void hitsAsSent()
    {
        VLSettings settings;
        // No installation id yet: the client id is empty and the hit still goes out.
        VLGoogleTracking::trackProgramEvent(QStringLiteral("UPDATE_ALL"), QStringLiteral("UPDATE_ALL"),
                                            QStringLiteral("AUTO"));
        QVERIFY(settings.setValue(QString::fromLatin1(SettingKey::penguin), QStringLiteral("a b/c")));
        // A label is sent as it stands, "&" and all.
        VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_LOGIN_FAIL"), QStringLiteral("x&y@example.com"),
                                            QStringLiteral("x&y@example.com"));
        QStringList bodies = receivedBodies();
        bodies.sort();
        QCOMPARE(bodies, (QStringList{
                             QStringLiteral("v=1&tid=UA-271828-3&cid=&an=VLD&av=6.0.4&t=event&ec=vld604&ea=UPDATE_ALL"
                                            "&el=UPDATE_ALL&ev=AUTO"),
                             QStringLiteral("v=1&tid=UA-271828-3&cid=a%20b%2Fc&an=VLD&av=6.0.4&t=event&ec=vld604"
                                            "&ea=MEMBER_LOGIN_FAIL&el=x&y@example.com&ev=x&y@example.com"),
                         }));
    }

    void switchedOff()
    {
        const int before = receivedBodies().size();
        QVERIFY(VLSettings().setValue(QString::fromLatin1(SettingKey::sendAnalytics), false));
        VLGoogleTracking::trackProgramEvent(QStringLiteral("MEMBER_LOGOUT"));
        QCOMPARE(receivedBodies().size(), before);
    }
};

VELMORA_TEST_MAIN(TestVLGoogleTracking)
#include "TestVLGoogleTracking.moc"
