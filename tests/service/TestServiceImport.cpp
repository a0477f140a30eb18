// Importing catalogues: the real-world catalogue (idempotent, mapped, matchable) and refused files.

#include "ServiceClient.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace {

const QString realCatalogue = QStringLiteral(VELMORA_REAL_CATALOGUE);

} // namespace

class TestServiceImport : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    std::unique_ptr<ServiceClient> m_client;
    QTemporaryDir m_files;

private slots:
    void initTestCase()
    {
        QVERIFY2(QFile::exists(realCatalogue), qPrintable(realCatalogue + QStringLiteral(" is missing")));
        QVERIFY(m_service.start({realCatalogue}));
        m_client = std::make_unique<ServiceClient>(m_service);
    }

    void importingAgainChangesNothing()
    {
        const QJsonObject before = m_client->matchOne("com.googlecode.iterm2", "iTerm.app", "iTerm");
        QByteArray output;
        QCOMPARE(m_service.runCommand({QStringLiteral("import"), realCatalogue}, &output), 0);
        QVERIFY2(output.contains(": 0 added, 0 changed, 4979 unchanged"), output.constData());
        const QJsonObject after = m_client->matchOne("com.googlecode.iterm2", "iTerm.app", "iTerm");
        QVERIFY(!before.isEmpty());
        QCOMPARE(after, before);
    }

    void realRecordsMatch_data()
    {
        columns<QByteArray, QByteArray, QByteArray, QString, QString, QString, QString>(
            "bundleId", "bundleName", "displayName", "name", "version", "minOs", "stability");
        // 1Password's bundle id is claimed by its beta and nightly channels too: the release wins.
        row("shared bundle id", QByteArray("com.1password.1password"), QByteArray("x.app"), QByteArray("x"),
            "1Password", "8.12.0", "12.0", QString());
        row("display name", QByteArray(""), QByteArray("x.app"), QByteArray("visual studio code"),
            "Microsoft Visual Studio Code", "1.109.0", QString(), QString());
    }

    void realRecordsMatch()
    {
        auto [bundleId, bundleName, displayName, name, version, minOs, stability] =
            fetch<QByteArray, QByteArray, QByteArray, QString, QString, QString, QString>(
                "bundleId", "bundleName", "displayName", "name", "version", "minOs", "stability");
        const QJsonObject record = m_client->matchOne(bundleId, bundleName, displayName);
        QCOMPARE(Replies::texts(record, {"g", "j", "l", "n"}), (QStringList{name, version, minOs, stability}));
        QVERIFY(record.value(QStringLiteral("m")).toString().toLongLong() >= 100000);
        QVERIFY(record.value(QStringLiteral("e1")).toString().startsWith(QStringLiteral("https://")));
        QCOMPARE(record.value(QStringLiteral("filehash")).toString().size(), 64);
    }

    void refusedFilesWriteNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        row("not JSON", QByteArray("[{\"name\": "));
        row("third record has no name",
            QByteArray(
                R"([{"name":"Alpha Tool","key":"alpha"},{"name":"Beta Tool","key":"beta"},{"key":"nameless"}])"));
        row("id not decimal", QByteArray(R"([{"name":"Gamma","vl_id":"12a"}])"));
        row("id past any integer", QByteArray(R"([{"name":"Gamma","vl_id":5e98}])"));
        row("id with a fraction", QByteArray(R"({"apps":[{"name":"Eps","vl_id":5}],"bundles":{"b":[5.5]}})"));
        row("list of numbers", QByteArray(R"([{"name":"Delta","bundle_ids":[1,2]}])"));
        row("bundle of unknown id", QByteArray(R"({"apps":[{"name":"Eps","key":"eps"}],"bundles":{"9":["777"]}})"));
    }

    void refusedFilesWriteNothing()
    {
        QFETCH(QByteArray, content);
        const QString path = m_files.filePath(QStringLiteral("bad.json"));
        QVERIFY(PlistFiles::writeFile(path, content));
        QCOMPARE(m_service.runCommand({QStringLiteral("import"), path}), 1);
        QVERIFY(m_client->matchOne("", "Alpha Tool.app", "Alpha Tool").isEmpty());
        QVERIFY(m_client->matchOne("", "Eps.app", "Eps").isEmpty());
    }

    void runningServiceSeesNewImport()
    {
        const QString path = m_files.filePath(QStringLiteral("more.json"));
        QVERIFY(PlistFiles::writeFile(path, R"([{"name":"Zeta Tool","key":"zeta",
            "current_version":"1.2","bundle_ids":["org.example.zeta"],"link":"/files/VelmoraNotes-2.0.zip"}])"));
        QCOMPARE(m_service.runCommand({QStringLiteral("import"), path}), 0);
        const QJsonObject record = m_client->matchOne("org.example.zeta");
        QCOMPARE(record.value(QStringLiteral("j")).toString(), QStringLiteral("1.2"));
        // A link to a served file gets this service's address and the file's hash.
        QCOMPARE(record.value(QStringLiteral("e1")).toString(),
                 m_service.baseUrl() + QStringLiteral("/files/VelmoraNotes-2.0.zip"));
        QCOMPARE(record.value(QStringLiteral("filehash")).toString().size(), 64);
        const QString id = record.value(QStringLiteral("m")).toString();

        // Changing the record keeps its id.
        QVERIFY(PlistFiles::writeFile(
            path, R"([{"name":"Zeta Tool","key":"zeta","current_version":"1.3","bundle_ids":["org.example.zeta"]}])"));
        QByteArray output;
        QCOMPARE(m_service.runCommand({QStringLiteral("import"), path}, &output), 0);
        QVERIFY(output.contains("0 added, 1 changed"));
        const QJsonObject updated = m_client->matchOne("org.example.zeta");
        QCOMPARE(updated.value(QStringLiteral("m")).toString(), id);
        QCOMPARE(updated.value(QStringLiteral("j")).toString(), QStringLiteral("1.3"));
    }
};

VELMORA_TEST_MAIN(TestServiceImport)
#include "TestServiceImport.moc"
