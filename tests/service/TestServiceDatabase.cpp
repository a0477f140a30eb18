// The database's versions and copies, on whichever back end the suite runs (see support/ServiceProcess.h): a
// database is made from nothing, brought up from the layout before versions were kept with its data, refused when
// newer than the program, and copied whole, so members still sign in at the copy.

#include "ServiceClient.h"
#include "model/StringUtils.h"
#include "storage/OpenStorage.h"
#include "support/TestMain.h"

#include <QJsonDocument>

namespace {

QByteArray md5(const QByteArray &text)
{
    return md5HexHash(QString::fromUtf8(text)).toLatin1();
}

// Runs statements on a service's database directly, as an older or newer program would have left it.
bool runSql(const QString &location, std::initializer_list<const char *> statements)
{
    QString error;
    auto db = openDatabase(location, std::chrono::seconds(5), &error);
    if (!db)
        return false;
    for (const char *sql : statements) {
        if (!SqlStatement(*db, sql).exec())
            return false;
    }
    return true;
}

QStringList args(std::initializer_list<const char *> words)
{
    QStringList list;
    for (const char *word : words)
        list.append(QString::fromUtf8(word));
    return list;
}

int copy(const QString &from, const QString &to, QByteArray *output = nullptr)
{
    QProcess process;
    process.start(ServiceProcess::binaryPath(),
                  {QStringLiteral("copy"), QStringLiteral("--from"), from, QStringLiteral("--to"), to});
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitCode();
}

} // namespace

class TestServiceDatabase : public QObject
{
    Q_OBJECT

private slots:
    // A database as an earlier program left it (no version kept, one index fewer), as this program's, and as a
    // later program's: what migrate and the other commands make of it.
    void versions_data()
    {
        QTest::addColumn<QList<QByteArray>>("statements");
        QTest::addColumn<int>("migrateExit");
        QTest::addColumn<QByteArray>("migrateSays");
        QTest::addColumn<int>("commandExitBefore");

        QTest::newRow("before versions") << QList<QByteArray>{"DELETE FROM meta WHERE name = 'schema_version'",
                                                              "DROP INDEX downloads_app"}
                                         << 0 << QByteArray("(was 1)") << 1;
        QTest::newRow("current") << QList<QByteArray>{} << 0 << QByteArray("(was 3)") << 0;
        QTest::newRow("newer") << QList<QByteArray>{"UPDATE meta SET value = '99' WHERE name = 'schema_version'"} << 1
                               << QByteArray() << 1;
    }
    void versions()
    {
        QFETCH(QList<QByteArray>, statements);
        QFETCH(int, migrateExit);
        QFETCH(QByteArray, migrateSays);
        QFETCH(int, commandExitBefore);
        ServiceProcess service;
        QVERIFY(service.start());
        QCOMPARE(service.runCommand(args({"add-member", "--email", "ann@example.com", "--password", "secret 1",
                                          "--first", "Ann", "--last", "Lee"})),
                 0);
        QVERIFY(service.stop());
        for (const QByteArray &sql : statements)
            QVERIFY(runSql(service.databasePath(), {sql.constData()}));

        QCOMPARE(service.runCommand(args({"blacklist"})), commandExitBefore);
        QByteArray output;
        QCOMPARE(service.runCommand(args({"migrate"}), &output), migrateExit);
        QVERIFY2(output.contains(migrateSays), output.constData());
        if (migrateExit != 0)
            return;
        // Brought up with its data: the member signs in and the sample is still there.
        QVERIFY(service.start());
        ServiceClient client(service);
        const HttpAnswer login = client.get("/vld6member/jlogincheck2/u/" + md5("ann@example.com") + "/p/" +
                                            md5("secret 1") + "/vld/6.0.4/c/C02TEST/os/14/r/1/cpu/8/uuid/U");
        QVERIFY2(QJsonDocument::fromJson(login.body).object().contains(QStringLiteral("id")), login.body.constData());
        QCOMPARE(client.get("/bundle/1").body, QByteArray("5001,5002,5003"));
    }

    void emptyDatabaseIsMadeByMigrate()
    {
        ServiceProcess service;
        QByteArray output;
        QCOMPARE(service.runCommand(args({"migrate"}), &output), 0);
        QCOMPARE(output.trimmed(), QByteArray("schema version 3 (was 0)"));
        QCOMPARE(service.runCommand(args({"migrate"}), &output), 0);
        QCOMPARE(output.trimmed(), QByteArray("schema version 3 (was 3)"));
    }

    // From the service's database to an SQLite file and on into a second service's database: every table keeps its
    // rows both ways, and a member signs in at the second service with the first one's key.
    void copyKeepsEveryRow()
    {
        ServiceProcess first;
        QVERIFY(first.start());
        ServiceClient client(first);
        QByteArray output;
        QCOMPARE(first.runCommand(args({"add-member", "--email", "bo@example.com", "--password", "pass wörd", "--first",
                                        "Bo", "--last", "Ek"}),
                                  &output),
                 0);
        const QByteArray memberId = output.trimmed();
        QCOMPARE(client.get("/vld6watchlists/awl/z/" + md5(memberId) + "/m/5001/e/1").status, 200);
        QCOMPARE(client.get("/download604/5002/abcd/" + memberId + "/0/0/UUID-1/C02TEST").status, 200);
        QCOMPARE(client.get("/api-create.php?url=http://example.com/app/mac/5001/x").status, 200);
        QCOMPARE(client.post("/collect", "v=1&t=pageview&dp=%2Fcopy").status, 200);
        QVERIFY(first.stop());

        QTemporaryDir between;
        const QString middle = between.filePath(QStringLiteral("copy.sqlite"));
        ServiceProcess second;
        QByteArray outbound, inbound;
        QCOMPARE(copy(first.databasePath(), middle, &outbound), 0);
        QCOMPARE(copy(middle, second.databasePath(), &inbound), 0);
        QCOMPARE(inbound, outbound);
        for (const char *table : {"apps: 7 rows", "members: 1 rows", "watchlist: 1 rows", "downloads: 1 rows",
                                  "short_links: 1 rows", "hits: 1 rows", "bundles: 2 rows"})
            QVERIFY2(outbound.contains(table), outbound.constData());
        // A copy goes only into a database without rows.
        QCOMPARE(copy(middle, second.databasePath()), 1);

        QVERIFY(QFile::copy(first.keyFilePath(), second.keyFilePath()));
        QVERIFY(second.start());
        ServiceClient copied(second);
        const HttpAnswer login = copied.get("/vld6member/jlogincheck2/u/" + md5("bo@example.com") + "/p/" +
                                            md5("pass wörd") + "/vld/6.0.4/c/C02TEST/os/14/r/1/cpu/8/uuid/U");
        QCOMPARE(QJsonDocument::fromJson(login.body).object().value(QStringLiteral("id")).toVariant().toByteArray(),
                 memberId);
        // New rows at the copy number on after the copied ones.
        QVERIFY(copied.get("/api-create.php?url=http://example.com/app/mac/5002/x").body.endsWith("/s/2"));
    }
};

VELMORA_TEST_MAIN(TestServiceDatabase)
#include "TestServiceDatabase.moc"
