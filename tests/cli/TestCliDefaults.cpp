// velmora-cli defaults: settings written, read back in their types, and removed again.

#include "support/CliRunner.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

namespace {
QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char('|'));
}
} // namespace

class TestCliDefaults : public QObject
{
    Q_OBJECT

private slots:
    // The rows run in order against one settings file: each may depend on the ones before it.
    void sequence_data()
    {
        // A null out is not compared.
        columns<QStringList, int, QString>("arguments", "exitCode", "out");

        const auto row = [](const char *line, int exitCode, const char *out) {
            QTest::newRow(line) << words(line) << exitCode << (out ? QString::fromUtf8(out) : QString());
        };
        row("defaults|read|showMAS", 0, "0\n");
        row("defaults|write|showMAS|-bool|YES", 0, "");
        row("defaults|read|showMAS", 0, "1\n");
        row("defaults|write|showMAS|no", 0, "");
        row("defaults|read|showMAS", 0, "0\n");
        row("defaults|write|showMAS|-bool|maybe", 2, "");
        row("defaults|write|showMAS|-string|YES", 2, "");
        row("defaults|write|listSort|-string|name", 0, "");
        row("defaults|read|listSort", 0, "name\n");
        row("defaults|write|searchpaths|-array|/opt/apps|/srv/My Apps", 0, "");
        row("defaults|read|searchpaths", 0, "(\n    \"/opt/apps\",\n    \"/srv/My Apps\"\n)\n");
        row("defaults|write|searchpaths|-array", 0, "");
        row("defaults|read|searchpaths", 0, "(\n)\n");
        row("defaults|write|searchpaths|/one", 0, "");
        row("defaults|read|searchpaths", 0, "(\n    \"/one\"\n)\n");
        row("defaults|write|listSort|a|b", 2, "");
        row("defaults|write|ownKey|-int|42", 0, "");
        row("defaults|read|ownKey", 0, "42\n");
        row("defaults|write|ownKey|-float|x", 2, "");
        row("defaults|read|noSuchKey", 1, "");
        row("defaults|read|showPaidUpgrades|--json", 0, "{\n    \"showPaidUpgrades\": true\n}\n");
        row("defaults|delete|showMAS", 0, "");
        row("defaults|delete|showMAS", 1, "");
        row("defaults|write|showMAS|-dict|a", 2, "");
        row("defaults|frob", 2, "");
        row("defaults|write||-string|x", 2, "");
        row("defaults|write|a/b|x", 2, "");
    }

    void sequence()
    {
        auto [arguments, exitCode, out] = fetch<QStringList, int, QString>("arguments", "exitCode", "out");
        const CliResult result = runCli(arguments);
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(QString::fromUtf8(result.out), out);
        QCOMPARE(result.err.isEmpty(), exitCode == 0);
    }

    void readAll()
    {
        QCOMPARE(runCli(words("defaults|write|volumeRoot|/Volumes/Mac HD")).exitCode, 0);
        QCOMPARE(runCli(words("defaults|write|listSort|name")).exitCode, 0);
        const CliResult result = runCli(words("defaults|read"));
        QCOMPARE(result.exitCode, 0);
        const QString text = QString::fromUtf8(result.out);
        QVERIFY(text.startsWith(QLatin1String("{\n    showStatusItem = 1;\n    listSort = name;\n")));
        QVERIFY(text.contains(QLatin1String("\n    volumeRoot = \"/Volumes/Mac HD\";\n")));
        QVERIFY(text.contains(QLatin1String("\n    escalationCommand = pkexec;\n")));
        QVERIFY(!text.contains(QLatin1String("lastNotified"))); // no value and no default
        QVERIFY(text.endsWith(QLatin1String("}\n")));
    }

    // A change that cannot be kept is a failure, not a silent success.
    void unwritableSettings()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral("/dev/null/settings"));
        const CliResult result = runCli(words("defaults|write|showMAS|YES"), environment);
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.err.startsWith("error: cannot write the settings file"));
    }
};

VELMORA_TEST_MAIN(TestCliDefaults)
#include "TestCliDefaults.moc"
