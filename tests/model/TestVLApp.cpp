// The record's archive form, the repairs made while restoring, and its small helpers.

#include "model/VLApp.h"
#include "model/VLMdItem.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTemporaryDir>

namespace {
const QString kMark = QStringLiteral(" ") + QChar(0xF8FF);

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

        const VLApp restored = VLApp::initWithCoder(archive);
        QCOMPARE(restored.encodeWithCoder(), archive);
        QCOMPARE(restored.kind, QStringLiteral("app"));
        QVERIFY(restored.isOutdated);
        QCOMPARE(restored.downloadPath, app.downloadPath);
        // The archive form is plain JSON: it survives being written out and read back.
        const QJsonObject reparsed = QJsonDocument::fromJson(QJsonDocument(archive).toJson()).object();
        QCOMPARE(VLApp::initWithCoder(reparsed).encodeWithCoder(), archive);
    }

    void restoreRepairs_data()
    {
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QVariant>("expected");

        QTest::newRow("blank path becomes dash")
            << QByteArray(R"({"localPath":"","name":"X.app"})") << "localPath" << QVariant(QStringLiteral("-"));
        QTest::newRow("missing display name from name") << QByteArray(R"({"localPath":"-","name":"Some Tool.app"})")
                                                        << "displayName" << QVariant(QStringLiteral("Some Tool"));
        QTest::newRow("names trimmed and joined")
            << QByteArray(R"({"localPath":"-","name":" A\tB\nC.app ","displayName":"\r X\tY "})") << "displayName"
            << QVariant(QStringLiteral("XY"));
        QTest::newRow("null license repaired")
            << QByteArray(R"({"localPath":"-","license":null})") << "license" << QVariant(QStringLiteral(""));
        QTest::newRow("missing min OS repaired")
            << QByteArray(R"({"localPath":"-"})") << "minOS" << QVariant(QStringLiteral(""));
        QTest::newRow("10146 never installs from a link")
            << QByteArray(R"({"localPath":"-","vlID":"10146","vld_install_from_link":"1"})") << "vld_install_from_link"
            << QVariant(QStringLiteral("2"));
        QTest::newRow("other ids keep their install mode")
            << QByteArray(R"({"localPath":"-","vlID":"10147","vld_install_from_link":"1"})") << "vld_install_from_link"
            << QVariant(QStringLiteral("1"));
        QTest::newRow("stored store flag ignored")
            << QByteArray(R"({"localPath":"-","isAppStore":true})") << "isAppStore" << QVariant(false);
        QTest::newRow("set to current takes the catalogue version")
            << QByteArray(
                   R"({"localPath":"-","localVersion":"1.0","vlVersion":"2.0","isSetLocalVersionToCurrent":true})")
            << "localVersion" << QVariant(QStringLiteral("2.0"));
        QTest::newRow("damaged value types read as absent or text")
            << QByteArray(R"({"localPath":"-","vlVersion":12,"name":["x"],"lastModified":"yesterday"})") << "vlVersion"
            << QVariant(QStringLiteral("12"));
    }

    void restoreRepairs()
    {
        QFETCH(QByteArray, archive);
        QFETCH(QString, field);
        QFETCH(QVariant, expected);
        QTest::failOnWarning(QRegularExpression(QStringLiteral(".")));
        const QJsonObject restored = VLApp::initWithCoder(json(archive.constData())).encodeWithCoder();
        QCOMPARE(restored.value(field).toVariant(), expected);
    }

    void notInstalledReReadsToDash()
    {
        // A catalogue-only record has nothing on disk to read: its version is "-", and so never outdated.
        const VLApp app = VLApp::initWithCoder(json(R"({"localPath":"-","localVersion":"1.0","vlVersion":"2.0"})"));
        QCOMPARE(app.localVersion, QStringLiteral("-"));
        QVERIFY(!app.isOutdated);
        QCOMPARE(app.description(), QStringLiteral(""));
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
        QCOMPARE(app.description(), app.localPath + QStringLiteral(" 2.0"));
    }

    void fileSizes_data()
    {
        QTest::addColumn<QString>("kilobytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << "0"
                              << "";
        QTest::newRow("under a kilobyte shows the kilobyte figure") << "0.5"
                                                                    << "0 bytes";
        QTest::newRow("just under the megabyte switch") << "1022"
                                                        << "1022 KB";
        QTest::newRow("switch to megabytes") << "1023"
                                             << "1 MB";
        QTest::newRow("gigabytes") << "3145728"
                                   << "3 GB";
        QTest::newRow("leading number of a text") << "100kb"
                                                  << "100 KB";
    }

    void fileSizes()
    {
        QFETCH(QString, kilobytes);
        QFETCH(QString, expected);
        QCOMPARE(VLApp::stringFromFileSizeString(kilobytes), expected);
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

    void paidUpgrade_data()
    {
        QTest::addColumn<QString>("local");
        QTest::addColumn<QString>("remote");
        QTest::addColumn<QString>("license");
        QTest::addColumn<QString>("paid");
        QTest::addColumn<bool>("expected");
        QTest::newRow("major change flagged") << "1.5"
                                              << "2.0"
                                              << ""
                                              << "1" << true;
        QTest::newRow("minor change flagged") << "1.5"
                                              << "1.6"
                                              << ""
                                              << "1" << false;
        QTest::newRow("free licence") << "1.5"
                                      << "2.0"
                                      << "Freeware"
                                      << "1" << false;
        QTest::newRow("not flagged") << "1.5"
                                     << "2.0"
                                     << ""
                                     << "0" << false;
        QTest::newRow("local without a dot") << "15"
                                             << "20"
                                             << ""
                                             << "1" << false;
    }

    void paidUpgrade()
    {
        QFETCH(QString, local);
        QFETCH(QString, remote);
        QFETCH(QString, license);
        QFETCH(QString, paid);
        QFETCH(bool, expected);
        VLApp app;
        app.localVersion = local;
        app.vlVersion = remote;
        app.license = license;
        app.paid_update = paid;
        app.checkIfOutdated();
        QVERIFY(app.isOutdated);
        QCOMPARE(app.isPaidUpgrade, expected);
    }

    void outdatedVerdict_data()
    {
        QTest::addColumn<QString>("skipped");
        QTest::addColumn<bool>("dontCheck");
        QTest::addColumn<bool>("outdated");
        QTest::newRow("skipped version hidden") << "2.0" << false << false;
        QTest::newRow("another version skipped") << "1.5" << false << true;
        QTest::newRow("never checked") << "-" << true << false;
    }

    void outdatedVerdict()
    {
        QFETCH(QString, skipped);
        QFETCH(bool, dontCheck);
        QFETCH(bool, outdated);
        VLApp app;
        app.localVersion = QStringLiteral("1.0");
        app.vlVersion = QStringLiteral("2.0");
        app.skippedVersion = skipped;
        app.dontCheckForUpdates = dontCheck;
        app.checkIfOutdated();
        QCOMPARE(app.isOutdated, outdated);
    }
};

VELMORA_TEST_MAIN(TestVLApp)
#include "TestVLApp.moc"
