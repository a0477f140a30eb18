// velmora-cli's first commands as a terminal user meets them: version rules, inspect, help and usage errors.

#include "support/CliRunner.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

class TestCliVersion : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

private slots:
    void commands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("out");

        const auto row = [](const char *tag, QStringList arguments, int exitCode, const QString &out) {
            QTest::newRow(tag) << arguments << exitCode << out;
        };
        row("program version", {QStringLiteral("--version")}, 0, QStringLiteral("6.0.4\n"));
        row("clean", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("Version 2.1.3 (Build 455)")}, 0,
            QStringLiteral("2.1.3\n"));
        row("clean empty", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("")}, 0, QStringLiteral("\n"));
        row("clean dash", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("-")}, 0, QStringLiteral("-\n"));
        row("clean option-like text", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("--verbose")}, 0,
            QStringLiteral("--verbose\n"));
        row("clean help-like text", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("--help")}, 0,
            QStringLiteral("--help\n"));
        row("clean blanks and tabs", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral(" \t3.0 Demo\t ")},
            0, QStringLiteral("3.0\n"));
        row("clean utf-8", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("Versión 5.0, © 2010")}, 0,
            QStringLiteral("5.0\n"));
        row("compare older", {QStringLiteral("version"), QStringLiteral("compare"), QStringLiteral("1.9"), QStringLiteral("1.10")},
            0, QStringLiteral("1\n"));
        row("compare negative-looking", {QStringLiteral("version"), QStringLiteral("compare"), QStringLiteral("-2"), QStringLiteral("-1")},
            0, QStringLiteral("0\n"));
        row("compare same", {QStringLiteral("version"), QStringLiteral("compare"), QStringLiteral("2.0"), QStringLiteral("2.0")},
            0, QStringLiteral("2\n"));
        row("outdated", {QStringLiteral("version"), QStringLiteral("outdated"), QStringLiteral("2.0 Build 5"), QStringLiteral("2.0")},
            0, QStringLiteral("true\n"));
        row("not outdated", {QStringLiteral("version"), QStringLiteral("outdated"), QStringLiteral("1.19"), QStringLiteral("1.100")},
            0, QStringLiteral("false\n"));
        row("verbose before the command", {QStringLiteral("--verbose"), QStringLiteral("version"), QStringLiteral("outdated"),
                                           QStringLiteral("1.0"), QStringLiteral("-")},
            0, QStringLiteral("false\n"));
        row("missing argument", {QStringLiteral("version"), QStringLiteral("compare"), QStringLiteral("1")}, 2, QString());
        row("extra argument", {QStringLiteral("version"), QStringLiteral("clean"), QStringLiteral("1"), QStringLiteral("2")}, 2,
            QString());
        row("unknown action", {QStringLiteral("version"), QStringLiteral("sort")}, 2, QString());
        row("unknown command", {QStringLiteral("frobnicate")}, 2, QString());
        row("unknown option", {QStringLiteral("--frob")}, 2, QString());
        row("no command", {}, 2, QString());
    }

    void commands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, out);
        const CliResult result = runCli(arguments);
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(QString::fromUtf8(result.out), out);
        if (exitCode == 2) {
            QVERIFY(result.err.startsWith("error: ") || result.err.startsWith("Usage:"));
        }
    }

    void helpExplains()
    {
        for (const QStringList &arguments : {QStringList{QStringLiteral("--help")},
                                             QStringList{QStringLiteral("version"), QStringLiteral("--help")},
                                             QStringList{QStringLiteral("inspect"), QStringLiteral("--help")}}) {
            const CliResult result = runCli(arguments);
            QCOMPARE(result.exitCode, 0);
            QVERIFY(result.out.startsWith("Usage: velmora-cli"));
        }
    }

    void inspectBundles()
    {
        const QString app = PlistFiles::makeBundle(m_root.path() + QStringLiteral("/Good Tool.app"),
                                                   PlistFiles::info(QStringLiteral("com.example.good"), QStringLiteral("3.2.1")),
                                                   PlistFiles::PlistFormat::Binary);
        const QString folder = m_root.path() + QStringLiteral("/Plain Folder");
        QDir().mkpath(folder);

        const CliResult text = runCli({QStringLiteral("inspect"), app, folder});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(QString::fromUtf8(text.out), QStringLiteral("Good Tool\tcom.example.good\t3.2.1\tapp\tnot App Store\n"
                                                             "Plain Folder\t-\t-\t-\tnot App Store\n"));
        QVERIFY(text.err.contains("warning: ") && text.err.contains("not a bundle"));

        const CliResult json = runCli({QStringLiteral("inspect"), app, QStringLiteral("--json")});
        QCOMPARE(json.exitCode, 0);
        QJsonParseError error;
        const QJsonArray records = QJsonDocument::fromJson(json.out, &error).array();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(records.size(), 1);
        const QJsonObject record = records.first().toObject();
        QCOMPARE(record.value(QStringLiteral("localPath")).toString(), app);
        QCOMPARE(record.value(QStringLiteral("bundleID")).toString(), QStringLiteral("com.example.good"));
        QCOMPARE(record.value(QStringLiteral("localVersion")).toString(), QStringLiteral("3.2.1"));
        QCOMPARE(record.value(QStringLiteral("kind")).toString(), QStringLiteral("app"));
        QCOMPARE(record.value(QStringLiteral("vlVersion")).toString(), QStringLiteral("-"));
        QCOMPARE(record.value(QStringLiteral("isAppStore")).toBool(true), false);
        QVERIFY(QDateTime::fromString(record.value(QStringLiteral("lastModified")).toString(), Qt::ISODateWithMs).isValid());
        QCOMPARE(record.value(QStringLiteral("digestString")).toString().size(), 32);
    }

    void inspectBadInput()
    {
        const QString malformed = m_root.path() + QStringLiteral("/Broken.app");
        PlistFiles::writeFile(malformed + QStringLiteral("/Contents/Info.plist"), "<plist><dict><key>oops");
        const CliResult broken = runCli({QStringLiteral("inspect"), malformed});
        QCOMPARE(broken.exitCode, 0);
        QCOMPARE(QString::fromUtf8(broken.out), QStringLiteral("Broken\t-\t-\tapp\tnot App Store\n"));
        QVERIFY(broken.err.contains("warning: "));

        const CliResult missing = runCli({QStringLiteral("inspect"), m_root.path() + QStringLiteral("/Nowhere.app")});
        QCOMPARE(missing.exitCode, 1);
        QVERIFY(missing.out.isEmpty());
        QVERIFY(missing.err.startsWith("error: "));

        QCOMPARE(runCli({QStringLiteral("inspect")}).exitCode, 2);
    }

    void verboseCopiesLogLines()
    {
        const QString path = m_root.path() + QStringLiteral("/Weird.app");
        PlistFiles::writePlist(path + QStringLiteral("/Contents/Info.plist"),
                               {{QStringLiteral("CFBundleShortVersionString"), QVariantList{1}}});
        const CliResult quiet = runCli({QStringLiteral("inspect"), path});
        QVERIFY(!quiet.err.contains("exception 2 checking"));
        const CliResult verbose = runCli({QStringLiteral("inspect"), path, QStringLiteral("--verbose")});
        QCOMPARE(verbose.exitCode, 0);
        QVERIFY(verbose.err.contains(QByteArray("exception 2 checking " + path.toUtf8())));
    }
};

VELMORA_TEST_MAIN(TestCliVersion)
#include "TestCliVersion.moc"
