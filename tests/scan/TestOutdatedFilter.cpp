#include "support/DataTable.h"
#include "support/TestMain.h"

#include "scan/OutdatedFilter.h"

class TestOutdatedFilter : public QObject
{
    Q_OBJECT

private slots:
    void filter_data()
    {
        // shown: the settings that are on, M(AS) B(eta) P(aid) O(S).
        columns<QString, bool, bool, QString, bool, bool, QString, bool>("localPath", "outdated", "appStore", "beta",
                                                                         "paid", "newerOS", "shown", "listed");

        QTest::newRow("plain update") << "/A.app" << true << false << "" << false << false << "P" << true;
        QTest::newRow("not outdated") << "/A.app" << false << false << "" << false << false << "MBPO" << false;
        QTest::newRow("not installed") << "-" << true << false << "" << false << false << "MBPO" << false;
        QTest::newRow("no path") << "" << true << false << "" << false << false << "MBPO" << false;
        QTest::newRow("App Store copy hidden") << "/A.app" << true << true << "" << false << false << "P" << false;
        QTest::newRow("App Store copy shown") << "/A.app" << true << true << "" << false << false << "MP" << true;
        QTest::newRow("beta hidden, any case")
            << "/A.app" << true << false << "Public BETA 2" << false << false << "P" << false;
        QTest::newRow("beta shown") << "/A.app" << true << false << "beta" << false << false << "BP" << true;
        QTest::newRow("stable text") << "/A.app" << true << false << "stable" << false << false << "" << true;
        QTest::newRow("paid upgrade hidden") << "/A.app" << true << false << "" << true << false << "" << false;
        QTest::newRow("paid upgrade shown") << "/A.app" << true << false << "" << true << false << "P" << true;
        QTest::newRow("needs newer OS hidden") << "/A.app" << true << false << "" << false << true << "MBP" << false;
        QTest::newRow("needs newer OS shown") << "/A.app" << true << false << "" << false << true << "O" << true;
    }

    void filter()
    {
        auto [localPath, outdated, appStore, beta, paid, newerOS, shown, listed] =
            fetch<QString, bool, bool, QString, bool, bool, QString, bool>("localPath", "outdated", "appStore", "beta",
                                                                           "paid", "newerOS", "shown", "listed");

        auto app = std::make_shared<VLApp>();
        app->localPath = localPath;
        app->isOutdated = outdated;
        app->isAppStore = appStore;
        app->beta = beta;
        app->isPaidUpgrade = paid;
        app->requiresNewerOSVersion = newerOS;
        OutdatedFilterOptions options;
        options.showMAS = shown.contains(QLatin1Char('M'));
        options.showBeta = shown.contains(QLatin1Char('B'));
        options.showPaidUpgrades = shown.contains(QLatin1Char('P'));
        options.showNewerOS = shown.contains(QLatin1Char('O'));
        QCOMPARE(isListedAsOutdated(*app, options), listed);
        QCOMPARE(outdatedApps(AppList{app}, options).size(), listed ? 1 : 0);
    }
};

VELMORA_TEST_MAIN(TestOutdatedFilter)
#include "TestOutdatedFilter.moc"
