// The desktop program's views against the real service: the sample apps' old versions on a volume of the test's
// own, a real check, an update run from a panel row to its done mark, the window's views and search over the
// scanned store, and the preferences writing their settings.

#include "GuiTestMain.h"
#include "support/HostSettings.h"
#include "support/ServiceProcess.h"

#include "app/DesktopApp.h"
#include "scan/VLMainWindowController.h"
#include "ui/AppListModel.h"
#include "ui/PanelAppRow.h"
#include "ui/PreferencesDialog.h"
#include "ui/VLMainWindow.h"
#include "ui/VLPanelController.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>

class TestDesktopWithService : public QObject
{
    Q_OBJECT

    ServiceProcess m_service;
    std::unique_ptr<DesktopApp> m_desktop;

    PanelAppRow *panelRow(const QString &name) const
    {
        for (PanelAppRow *row : m_desktop->panel().findChildren<PanelAppRow *>()) {
            if (row->app()->displayName == name) {
                return row;
            }
        }
        return nullptr;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_service.start());
        const QString volume = QDir::homePath() + QStringLiteral("/volume");
        QVERIFY(QDir().mkpath(volume));
        QProcess copy;
        copy.start(QStringLiteral("cp"),
                   {QStringLiteral("-a"), QStringLiteral(VELMORA_BINARY_DIR "/service/installed/Applications"),
                    volume + QStringLiteral("/")});
        QVERIFY(copy.waitForFinished() && copy.exitCode() == 0);
        QVERIFY(pointHostsAt(m_service.baseUrl()));
        VLSettings settings;
        settings.setValue(QLatin1String(SettingKey::sendAnalytics), false);
        settings.setValue(QLatin1String(SettingKey::startupItem), false);
        settings.setValue(QLatin1String(SettingKey::volumeRoot), volume);
        m_desktop = std::make_unique<DesktopApp>();
    }

    void cleanupTestCase() { m_desktop.reset(); }

    void panelChecksThenListsNewestFirst()
    {
        VLPanelController &panel = m_desktop->panel();
        QSignalSpy finished(&m_desktop->driver(), &VLMainWindowController::checkFinished);
        m_desktop->driver().checkForUpdates();
        QCOMPARE(panel.statusText(), QStringLiteral("Checking for updates"));
        QVERIFY(finished.wait(60000));
        QVERIFY(finished.first().first().toBool());

        QTRY_VERIFY(panel.tableShown());
        QCOMPARE(panel.findChild<QLabel *>(QStringLiteral("numberUpdatesAvailable"))->text(), QStringLiteral("6"));
        const AppList listed = panel.outdatedApps();
        QCOMPARE(listed.size(), 6);
        for (int i = 1; i < listed.size(); ++i) {
            QVERIFY(listed.at(i - 1)->sortDate >= listed.at(i)->sortDate);
        }
    }

    void rowUpdateEndsWithItsDoneMark()
    {
        PanelAppRow *row = panelRow(QStringLiteral("Velmora Notes"));
        QVERIFY(row);
        row->findChild<QPushButton *>(QStringLiteral("rowUpdate"))->click();
        QVERIFY(row->state() == PanelAppRow::State::Updating || row->state() == PanelAppRow::State::Installing);
        QTRY_COMPARE_WITH_TIMEOUT(row->state(), PanelAppRow::State::Done, 60000);
        QCOMPARE(row->app()->localVersion, QStringLiteral("2.0"));
        QCOMPARE(m_desktop->panel().findChild<QLabel *>(QStringLiteral("numberUpdatesAvailable"))->text(),
                 QStringLiteral("5"));
        // The done row stays until the finished rows expire; then only the outdated remain.
        QVERIFY(panelRow(QStringLiteral("Velmora Notes")));
        m_desktop->panel().removeOlderLaunchAppsFromPanel(QDateTime::currentDateTimeUtc().addSecs(1801));
        QVERIFY(!panelRow(QStringLiteral("Velmora Notes")));
        QCOMPARE(m_desktop->panel().outdatedApps().size(), 5);
    }

    void windowViewsAndSearch_data()
    {
        QTest::addColumn<AppView>("view");
        QTest::addColumn<QString>("search");
        QTest::addColumn<int>("rows");
        QTest::newRow("updates") << AppView::Updates << QString() << 5;
        QTest::newRow("installed") << AppView::Installed << QString() << 6;
        QTest::newRow("search any case") << AppView::Installed << QStringLiteral("pAINT") << 1;
        QTest::newRow("search the updated app among updates") << AppView::Updates << QStringLiteral("Notes") << 0;
        QTest::newRow("no watch list yet") << AppView::WatchList << QString() << 0;
    }

    void windowViewsAndSearch()
    {
        QFETCH(AppView, view);
        QFETCH(QString, search);
        QFETCH(int, rows);
        VLMainWindow &window = m_desktop->window();
        QAbstractItemModelTester tester(&window.listModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        window.setSearchText(search);
        window.showView(view);
        QCOMPARE(window.listModel().rowCount(), rows);
        window.setSearchText(QString());
    }

    void preferencesWriteAtOnce_data()
    {
        QTest::addColumn<QString>("key");
        for (const QString &key : PreferencesDialog::shownKeys()) {
            QTest::newRow(qPrintable(key)) << key;
        }
    }

    void preferencesWriteAtOnce()
    {
        QFETCH(QString, key);
        PreferencesDialog preferences;
        auto *box = preferences.findChild<QCheckBox *>(key);
        QVERIFY(box);
        const bool before = VLSettings().boolValue(qPrintable(key));
        QCOMPARE(box->isChecked(), before);
        box->click();
        QCOMPARE(VLSettings().boolValue(qPrintable(key)), !before);
        box->click();
        QCOMPARE(VLSettings().boolValue(qPrintable(key)), before);
    }
};

VELMORA_GUI_TEST_MAIN(TestDesktopWithService)
#include "TestDesktopWithService.moc"
