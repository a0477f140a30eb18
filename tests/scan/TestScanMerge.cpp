#include "support/DataTable.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include "scan/ScanMerge.h"

#include <QDir>
#include <QTemporaryDir>

namespace {

// "path", "path+order" (a purchase), "path+empty" (a purchase whose order id is ""), "path+deal" (a deal) or
// "path+none" (ids that name neither: absent and "-").
AppList records(const QStringList &descriptions)
{
    AppList apps;
    for (const QString &entry : descriptions) {
        auto app = std::make_shared<VLApp>();
        const QStringList parts = entry.split(QLatin1Char('+'));
        app->localPath = parts.first();
        app->displayName = parts.first();
        if (parts.value(1) == QLatin1String("order")) {
            app->orderid = QStringLiteral("77");
        } else if (parts.value(1) == QLatin1String("deal")) {
            app->deal_id = QStringLiteral("12");
        } else if (parts.value(1) == QLatin1String("empty")) {
            app->orderid = QStringLiteral("");
        } else if (parts.value(1) == QLatin1String("none")) {
            app->deal_id = QStringLiteral("-");
        }
        apps.append(app);
    }
    return apps;
}

QStringList paths(const AppList &apps)
{
    QStringList result;
    for (const AppRef &app : apps) {
        result.append(app->localPath);
    }
    return result;
}

} // namespace

class TestScanMerge : public QObject
{
    Q_OBJECT

private slots:
    void merge_data()
    {
        columns<QStringList, QStringList, QStringList>("stored", "scan", "expected");

        QTest::newRow("unchanged") << L({"/a", "/b"}) << L({"/b", "/a"}) << L({"/a", "/b"});
        QTest::newRow("new apps follow in scan order") << L({"/m"}) << L({"/z", "/m", "/a"}) << L({"/m", "/z", "/a"});
        QTest::newRow("moved app is a new record")
            << L({"/x/A.app", "/k"}) << L({"/k", "/y/A.app"}) << L({"/k", "/y/A.app"});
        QTest::newRow("deleted purchase stays as -") << L({"/a+order", "/b"}) << L({"/b"}) << L({"-", "/b"});
        QTest::newRow("deleted deal stays as -") << L({"/a+deal"}) << QStringList{} << L({"-"});
        QTest::newRow("uninstalled purchase stays") << L({"-+order"}) << L({"/a"}) << L({"-", "/a"});
        QTest::newRow("catalogue-only record goes") << L({"-", "/a"}) << L({"/a"}) << L({"/a"});
        QTest::newRow("purchase reinstalled at its path") << L({"/a+order"}) << L({"/a"}) << L({"/a"});
        QTest::newRow("duplicate stored paths both kept") << L({"/a", "/a"}) << L({"/a"}) << L({"/a", "/a"});
        QTest::newRow("duplicate scan paths both added") << L({"/b"}) << L({"/a", "/a"}) << L({"/a", "/a"});
        QTest::newRow("paths compare case-sensitively") << L({"/A.app"}) << L({"/a.app"}) << L({"/a.app"});
        QTest::newRow("purchase with an empty order id stays") << L({"/a+empty"}) << QStringList{} << L({"-"});
        QTest::newRow("signed-out purchase goes") << L({"/a+none", "/b"}) << L({"/b"}) << L({"/b"});
        QTest::newRow("empty scan empties the store") << L({"/a", "/b"}) << QStringList{} << QStringList{};
    }

    void merge()
    {
        auto [stored, scan, expected] = fetch<QStringList, QStringList, QStringList>("stored", "scan", "expected");
        AppList apps = records(stored);
        ScanMerge::updateAppsUsingNewScan(apps, records(scan));
        QCOMPARE(paths(apps), expected);
    }

    void keepsStoredFields()
    {
        AppList apps = records(L({"/a", "/a"}));
        apps.first()->vlID = QStringLiteral("10146");
        apps.first()->skippedVersion = QStringLiteral("3.0");
        apps.first()->dontCheckForUpdates = true;
        apps.first()->localVersion = QStringLiteral("1.0");
        const QDateTime before = QDateTime::fromSecsSinceEpoch(1000, Qt::UTC);
        apps.at(1)->lastOpened = before;

        const AppList scan = records(L({"/a"}));
        scan.first()->localVersion = QStringLiteral("2.0");
        scan.first()->lastOpened = QDateTime::fromSecsSinceEpoch(5000, Qt::UTC);
        const AppRef stored = apps.first();
        ScanMerge::updateAppsUsingNewScan(apps, scan);

        QCOMPARE(apps.size(), 2);
        QCOMPARE(apps.first(), stored); // the same record, not a copy of the scanned one
        QCOMPARE(stored->lastOpened, scan.first()->lastOpened);
        QCOMPARE(stored->vlID, QStringLiteral("10146"));
        QCOMPARE(stored->skippedVersion, QStringLiteral("3.0"));
        QVERIFY(stored->dontCheckForUpdates);
        QCOMPARE(stored->localVersion, QStringLiteral("1.0"));
        QCOMPARE(apps.at(1)->lastOpened, before); // only the first record with the path is touched
    }

    void sanityCheck_data()
    {
        // path: relative to a temporary folder, or a marker; expected: "kept", "-" or "removed".
        columns<QString, bool, QString>("path", "exists", "expected");

        QTest::newRow("installed") << "Applications/A.app" << true << "kept";
        QTest::newRow("file gone") << "Applications/B.app" << false << "-";
        QTest::newRow("in the trash") << ".Trash/C.app" << true << "removed";
        QTest::newRow("gone from the trash") << ".Trash/D.app" << false << "-";
        QTest::newRow("not installed") << "-" << false << "-";
        QTest::newRow("never had a path") << "" << false << "-";
    }

    void sanityCheck()
    {
        auto [path, exists, expected] = fetch<QString, bool, QString>("path", "exists", "expected");
        QTemporaryDir dir;
        const bool marker = path.isEmpty() || path == QLatin1String("-");
        const QString full = marker ? path : dir.path() + QLatin1Char('/') + path;
        if (exists) {
            QVERIFY(QDir().mkpath(full));
        }
        AppList apps = records({QStringLiteral("/other+order")});
        apps.first()->localPath = full;
        if (expected == QLatin1String("removed")) {
            QTest::ignoreMessage(QtInfoMsg, "cache data contained app in Trash - removing /other");
        }
        ScanMerge::doQuickSanityCheck(apps);
        if (expected == QLatin1String("removed")) {
            QVERIFY(apps.isEmpty());
        } else {
            QCOMPARE(apps.size(), 1);
            QCOMPARE(apps.first()->localPath, expected == QLatin1String("kept") ? full : QStringLiteral("-"));
        }
    }
};

VELMORA_TEST_MAIN(TestScanMerge)
#include "TestScanMerge.moc"
