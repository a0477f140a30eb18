// The record's archive form, the repairs made while restoring, its verdicts and its small helpers.

#include "model/VLApp.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QJsonDocument>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>

#include <clocale>

namespace {
const QString kMark = QStringLiteral(" \uF8FF");

QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}
} // namespace

class TestVLApp : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

    VLApp installedApp(const QString &relativePath, const QString &version)
    {
        const QString path = PlistFiles::makeBundle(m_root.path() + QLatin1Char('/') + relativePath,
                                                    PlistFiles::info(QStringLiteral("com.example.full"), version));
        return VLApp::initWithBundleAt(path);
    }

private slots:
    void initTestCase()
    {
        // A locale that writes "0,5", made here so the test needs no installed locales: only its numbers are defined.
        const QString source = m_root.filePath(QStringLiteral("comma.src"));
        QVERIFY(PlistFiles::writeFile(source, "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                              "grouping 3;3\nEND LC_NUMERIC\n"));
        QVERIFY(QDir().mkpath(m_root.filePath(QStringLiteral("locales"))));
        QProcess::execute(QStringLiteral("localedef"),
                          {QStringLiteral("-c"), QStringLiteral("-i"), source, QStringLiteral("-f"),
                           QStringLiteral("ANSI_X3.4-1968"), m_root.filePath(QStringLiteral("locales/comma"))});
        qputenv("LOCPATH", QFile::encodeName(m_root.filePath(QStringLiteral("locales"))));
    }

    void archiveRoundTripKeepsEveryField()
    {
        const VLApp app = installedApp(QStringLiteral("Full.app"), QStringLiteral("1.2.3"));
        QJsonObject archive = app.encodeWithCoder();
        // Every text the bundle left unknown gets a value of its own, so a field the decoder drops or swaps shows.
        for (auto it = archive.begin(); it != archive.end(); ++it) {
            if (it->isNull() || (it->isString() && (it->toString().isEmpty() || it->toString() == u"-")))
                *it = QString(it.key() + QStringLiteral(" value"));
        }
        archive[QStringLiteral("ranking")] = 7.5;
        archive[QStringLiteral("lastOpened")] = QStringLiteral("2026-01-02T03:04:05.678Z");
        archive[QStringLiteral("lastupdated")] = QStringLiteral("2026-11-21T01:02:03.000Z");
        archive[QStringLiteral("isOutdated")] = true; // "vlVersion value" is newer than 1.2.3

        // Text that must be escaped, written straight as the store's text.
        archive[QStringLiteral("releaseNotes")] =
            QStringLiteral("\"quoted\" \\ line\n\ttab \u0001 \u00fcn\u00efc\u00f6de");
        // A lone surrogate, as a damaged store can hold: it has no UTF-8 form and must still come back unchanged.
        archive[QStringLiteral("shortDescription")] =
            QString(QStringLiteral("before ") + QChar(0xd800) + QStringLiteral(" after"));

        const VLApp restored = VLApp::initWithCoder(archive);
        QCOMPARE(restored.encodeWithCoder(), archive);
        QCOMPARE(restored.kind, QStringLiteral("app"));
        QCOMPARE(restored.downloadPath, app.downloadPath);
        QByteArray text;
        restored.appendArchiveJson(text);
        QCOMPARE(QJsonDocument::fromJson(text).object(), archive);
    }

    // A record restored or matched with a scan's readings is the record that reading the bundle again gives.
    void scannedReadingsStandForTheBundle_data()
    {
        columns<QString, bool, bool>("versionOverride", "setCurrent", "bundleChanged");
        QTest::newRow("plain rule") << QString() << false << false;
        QTest::newRow("plain rule, bundle changed since") << QStringLiteral("0") << false << true;
        QTest::newRow("bundle version rule") << QStringLiteral("1") << false << true;
        QTest::newRow("set current") << QString() << true << true;
    }

    void scannedReadingsStandForTheBundle()
    {
        QFETCH(QString, versionOverride);
        QFETCH(bool, setCurrent);
        QFETCH(bool, bundleChanged);
        const VLApp scanned =
            installedApp(QString::fromLatin1(QTest::currentDataTag()) + QStringLiteral(".app"), QStringLiteral("2.0"));
        QJsonObject archive = scanned.encodeWithCoder();
        archive[QStringLiteral("version_override")] = versionOverride;
        archive[QStringLiteral("isSetLocalVersionToCurrent")] = setCurrent;
        archive[QStringLiteral("localVersion")] = QStringLiteral("1.0");
        archive[QStringLiteral("vlVersion")] = QStringLiteral("3.0");
        if (bundleChanged) {
            archive[QStringLiteral("lastModified")] = QStringLiteral("2000-01-01T00:00:00.000Z");
        }
        VLApp withScan = VLApp::initWithCoder(archive, &scanned);
        VLApp reread = VLApp::initWithCoder(archive);
        QCOMPARE(withScan.encodeWithCoder(), reread.encodeWithCoder());
        const QVariantMap reply{{QStringLiteral("j"), QStringLiteral("3.1")}}; // the newest version
        withScan.updateWithServerItemJSON(reply, &scanned);
        reread.updateWithServerItemJSON(reply);
        withScan.lastmatched = reread.lastmatched;
        QCOMPARE(withScan.encodeWithCoder(), reread.encodeWithCoder());
    }

    void restoreRepairs_data()
    {
        columns<QByteArray, QString, QVariant>("archive", "field", "expected");
        const auto row = [](const char *tag, const char *archive, const char *field, const QVariant &expected) {
            QTest::newRow(tag) << QByteArray(archive) << QString::fromLatin1(field) << expected;
        };
        row("blank path becomes dash", R"({"localPath":"","name":"X.app"})", "localPath", QStringLiteral("-"));
        row("missing display name from name", R"({"localPath":"-","name":"Some Tool.app"})", "displayName",
            QStringLiteral("Some Tool"));
        row("names trimmed and joined", R"({"localPath":"-","name":" A\tB\nC.app ","displayName":"\r X\tY "})",
            "displayName", QStringLiteral("XY"));
        row("null license repaired", R"({"localPath":"-","license":null})", "license", QStringLiteral(""));
        row("missing min OS repaired", R"({"localPath":"-"})", "minOS", QStringLiteral(""));
        row("10146 never installs from a link", R"({"localPath":"-","vlID":"10146","vld_install_from_link":"1"})",
            "vld_install_from_link", QStringLiteral("2"));
        row("stored store flag ignored", R"({"localPath":"-","isAppStore":true})", "isAppStore", false);
        row("set to current takes the catalogue version",
            R"({"localPath":"-","localVersion":"1.0","vlVersion":"2.0","isSetLocalVersionToCurrent":true})",
            "localVersion", QStringLiteral("2.0"));
        row("damaged value types read as absent or text",
            R"({"localPath":"-","vlVersion":12,"name":["x"],"lastModified":"yesterday"})", "vlVersion",
            QStringLiteral("12"));
        row("nothing installed to read", R"({"localPath":"-","localVersion":"1.0","vlVersion":"2.0"})", "localVersion",
            QStringLiteral("-"));
        row("a skipped update keeps its paid-upgrade mark",
            R"({"localPath":"-","vlVersion":"2.0","skippedVersion":"2.0","isPaidUpgrade":true})", "isPaidUpgrade",
            true);
    }

    void restoreRepairs()
    {
        auto [archive, field, expected] = fetch<QByteArray, QString, QVariant>("archive", "field", "expected");
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        const QJsonObject restored = VLApp::initWithCoder(json(archive.constData())).encodeWithCoder();
        QCOMPARE(restored.value(field).toVariant(), expected);
    }

    void appStoreMarkAppearsOnce()
    {
        const QString path =
            PlistFiles::makeBundle(m_root.path() + QStringLiteral("/Shop.app"),
                                   PlistFiles::info(QStringLiteral("com.example.shop"), QStringLiteral("4.0")));
        PlistFiles::writeFile(path + QStringLiteral("/Contents/_MASReceipt/receipt"), "r");
        VLApp app = VLApp::initWithBundleAt(path);
        QCOMPARE(app.displayName, QStringLiteral("Shop") + kMark);
        for (int i = 0; i < 5; ++i) {
            app = VLApp::initWithCoder(app.encodeWithCoder());
        }
        QCOMPARE(app.displayName, QStringLiteral("Shop") + kMark);

        // A store written with the mark twice is mended.
        QJsonObject doubled = app.encodeWithCoder();
        doubled.insert(QStringLiteral("displayName"), QString(QStringLiteral("Shop") + kMark + kMark));
        QCOMPARE(VLApp::initWithCoder(doubled).displayName, QStringLiteral("Shop") + kMark);
    }

    void modificationReReadsVersion()
    {
        VLApp app = installedApp(QStringLiteral("Changing.app"), QStringLiteral("1.0"));
        PlistFiles::makeBundle(app.localPath,
                               PlistFiles::info(QStringLiteral("com.example.full"), QStringLiteral("2.0")));
        app.updateModDate();
        QCOMPARE(app.localVersion, QStringLiteral("1.0")); // the folder's own date did not change
        app.lastModified = app.lastModified.addSecs(-10);
        app.updateModDate();
        QCOMPARE(app.localVersion, QStringLiteral("2.0"));
    }

    void fileSizes_data()
    {
        columns<QString, QString>("kilobytes", "expected");
        row("zero", "0", "");
        row("under a kilobyte shows the kilobyte figure", "0.5", "0 bytes");
        row("just under the megabyte switch", "1022", "1022 KB");
        row("switch to megabytes", "1023", "1 MB");
        row("gigabytes", "3145728", "3 GB");
        row("leading number of a text", " 100kb", "100 KB");
        row("no hexadecimal", "0x10", "");
    }

    // Sizes read the same whatever the user's locale writes numbers like.
    void fileSizes()
    {
        auto [kilobytes, expected] = fetch<QString, QString>("kilobytes", "expected");
        QCOMPARE(VLApp::stringFromFileSizeString(kilobytes), expected);

        const QByteArray numeric = std::setlocale(LC_NUMERIC, nullptr);
        QVERIFY2(std::setlocale(LC_NUMERIC, "comma"), "localedef could not make the test's comma locale");
        QLocale::setDefault(QLocale(QLocale::German));
        const QString underComma = VLApp::stringFromFileSizeString(kilobytes);
        std::setlocale(LC_NUMERIC, numeric.constData());
        QLocale::setDefault(QLocale::c());
        QCOMPARE(underComma, expected);
    }

    void randomNumbersStayInRange()
    {
        for (const auto &[from, to] : {std::pair{3, 7}, std::pair{-5, 5}, std::pair{10, 10}}) {
            for (int i = 0; i < 500; ++i) {
                const qint32 value = qint32(VLApp::getRandomNumberBetween(from, to));
                QVERIFY2(value >= from && value <= to, qPrintable(QString::number(value)));
            }
        }
    }

    // The outdated verdict, and the paid-upgrade verdict that follows it: set only for an outdated record,
    // kept as it was otherwise.
    void verdicts_data()
    {
        columns<QString, QString, QString, bool, QString, QString, bool, bool, bool>(
            "local", "remote", "skipped", "dontCheck", "license", "paidFlag", "paidBefore", "outdated", "paid");
        row("major change flagged", "1.5", "2.0", "-", false, "", "1", false, true, true);
        row("minor change flagged", "1.5", "1.6", "-", false, "", "1", true, true, false);
        row("free licence", "1.5", "2.0", "-", false, "Freeware", "1", false, true, false);
        row("not flagged", "1.5", "2.0", "-", false, "", "0", false, true, false);
        row("local without a dot", "15", "20", "-", false, "", "1", false, true, false);
        row("up to date keeps the mark", "2.0", "2.0", "-", false, "", "1", true, false, true);
        row("skipped version hidden", "1.0", "2.0", "2.0", false, "", "1", true, false, true);
        row("another version skipped", "1.0", "2.0", "1.5", false, "", "1", false, true, true);
        row("never checked", "1.0", "2.0", "-", true, "", "1", false, false, false);
    }

    void verdicts()
    {
        auto [local, remote, skipped, dontCheck, license, paidFlag, paidBefore, outdated, paid] =
            fetch<QString, QString, QString, bool, QString, QString, bool, bool, bool>(
                "local", "remote", "skipped", "dontCheck", "license", "paidFlag", "paidBefore", "outdated", "paid");
        VLApp app;
        app.localVersion = local;
        app.vlVersion = remote;
        app.skippedVersion = skipped;
        app.dontCheckForUpdates = dontCheck;
        app.license = license;
        app.paid_update = paidFlag;
        app.isPaidUpgrade = paidBefore;
        app.checkIfOutdated();
        QCOMPARE(app.isOutdated, outdated);
        QCOMPARE(app.isPaidUpgrade, paid);
    }
};

VELMORA_TEST_MAIN(TestVLApp)
#include "TestVLApp.moc"
