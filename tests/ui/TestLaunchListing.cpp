// A launch on a store matched just now: the window, made while the check thread reads the store, lists its records
// in each view once the read is done, without a check of its own.

#include "GuiTestMain.h"
#include "support/HostSettings.h"
#include "support/PlistFiles.h"

#include "app/DesktopApp.h"
#include "model/DateDescription.h"
#include "platform/VLSettings.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "ui/VLMainWindow.h"

#include <QListWidget>
#include <QSignalSpy>
#include <QTreeView>

class TestLaunchListing : public QObject
{
    Q_OBJECT

    static constexpr int kRecords = 5;
    static constexpr int kOutdated = 2;
    std::unique_ptr<DesktopApp> m_desktop;

private slots:
    void initTestCase()
    {
        const QString volume = QDir::homePath() + QStringLiteral("/volume");
        QVERIFY(pointHostsAt(QStringLiteral("http://127.0.0.1:1"), {SettingKey::serviceHost, SettingKey::siteHost,
                                                                    SettingKey::analyticsHost, SettingKey::dealsHost}));
        VLSettings settings;
        settings.setValue(QLatin1String(SettingKey::sendAnalytics), false);
        settings.setValue(QLatin1String(SettingKey::startupItem), false);
        settings.setValue(QLatin1String(SettingKey::showStatusItem), false);
        settings.setValue(QLatin1String(SettingKey::volumeRoot), volume);
        AppList apps;
        for (int i = 0; i < kRecords; ++i) {
            const QString path = volume + QStringLiteral("/Applications/Listed %1.app").arg(i);
            PlistFiles::makeBundle(
                path, PlistFiles::info(QStringLiteral("org.example.listed%1").arg(i), QStringLiteral("1.0")));
            auto app = std::make_shared<VLApp>(VLApp::initWithBundleAt(path));
            app->vlID = QString::number(100 + i);
            app->vlVersion = i < kOutdated ? QStringLiteral("2.0") : app->localVersion;
            app->lastmatched = dateDescription(QDateTime::currentDateTimeUtc());
            app->checkIfOutdated();
            apps.append(app);
        }
        VLScanData store;
        VLScanData::Change change(store);
        store.setApps(apps);
        QVERIFY(store.saveDataToDisk());

        m_desktop = std::make_unique<DesktopApp>();
        QSignalSpy loaded(&m_desktop->driver(), &VLMainWindowController::checkFinished);
        m_desktop->start(false);
        QVERIFY(loaded.wait(30000));
    }

    void cleanupTestCase() { m_desktop.reset(); }

    void viewsListTheStoredRecords_data()
    {
        QTest::addColumn<int>("view");
        QTest::addColumn<int>("rows");
        QTest::newRow("updates") << 0 << kOutdated;
        QTest::newRow("installed") << 1 << kRecords;
    }

    void viewsListTheStoredRecords()
    {
        QFETCH(int, view);
        QFETCH(int, rows);
        VLMainWindow &window = m_desktop->window();
        QVERIFY(window.isVisible());
        window.findChild<QListWidget *>(QStringLiteral("navigation"))->setCurrentRow(view);
        QTRY_COMPARE(window.findChild<QTreeView *>(QStringLiteral("appList"))->model()->rowCount(), rows);
    }
};

VELMORA_GUI_TEST_MAIN(TestLaunchListing)
#include "TestLaunchListing.moc"
