// Settings changes reach the rest of the process only once the file holds them.

#include "platform/VLSettings.h"
#include "platform/VLSettingsNotifier.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

class TestVLSettings : public QObject
{
    Q_OBJECT

private slots:
    void changeSignal()
    {
        QSignalSpy spy(&VLSettingsNotifier::instance(), &VLSettingsNotifier::changed);
        VLSettings settings;
        QVERIFY(settings.setValue(QString::fromLatin1(SettingKey::showBeta), true));
        QVERIFY(settings.remove(QString::fromLatin1(SettingKey::showBeta)));
        QCOMPARE(spy.count(), 2);
        QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("showBeta"));

        // A change that cannot be written is not announced (a folder where the file belongs stops even root).
        QVERIFY(QFile::remove(settings.fileName()));
        QVERIFY(QDir().mkpath(settings.fileName()));
        QVERIFY(!VLSettings().setValue(QString::fromLatin1(SettingKey::showMAS), true));
        QVERIFY(QDir(settings.fileName()).removeRecursively());
        QCOMPARE(spy.count(), 2);
    }
};

VELMORA_TEST_MAIN(TestVLSettings)
#include "TestVLSettings.moc"
