// velmora-cli as a terminal user first meets it: version rules, inspect, help and every command's usage errors.

#include "support/CliRunner.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

class TestCliVersion : public QObject
{
    Q_OBJECT

    QTemporaryDir m_root;

private slots:
    void commands_data()
    {
        columns<QStringList, int, QString>("arguments", "exitCode", "out");

        // Arguments are written as one line split at "|"; an empty line is no argument at all.
        const auto row = [](const char *tag, const char *line, int exitCode, const char *out) {
            const QString words = QString::fromUtf8(line);
            QTest::newRow(tag) << (words.isEmpty() ? QStringList() : words.split(u'|')) << exitCode
                               << QString::fromUtf8(out);
        };
        row("program version", "--version", 0, "6.0.4\n");
        row("clean empty", "version|clean|", 0, "\n");
        row("clean option-like text", "version|clean|--verbose", 0, "--verbose\n");
        row("clean help-like text", "version|clean|--help", 0, "--help\n");
        row("clean utf-8 in and out", "version|clean|Versi\u00f3n 2.0\u00e9", 0, "2.0\u00e9\n");
        row("compare negative-looking", "version|compare|-2|-1", 0, "0\n");
        row("outdated", "version|outdated|2.0 Build 5|2.0", 0, "true\n");
        row("verbose before the command", "--verbose|version|outdated|1.0|-", 0, "false\n");
        row("missing argument", "version|compare|1", 2, "");
        row("extra argument", "version|clean|1|2", 2, "");
        row("unknown action", "version|sort", 2, "");
        row("unknown command", "frobnicate", 2, "");
        row("unknown option", "--frob", 2, "");
        row("no command", "", 2, "");
        row("inspect with an unknown option", "inspect|--frob", 2, "");
        row("inspect with no path after --", "inspect|--", 2, "");
        row("inspect with no path", "inspect", 2, "");
        row("scan with a word", "scan|now", 2, "");
        row("list with a word", "list|everything", 2, "");
        row("list with two filters", "list|--installed|--all", 2, "");
    }

    void commands()
    {
        auto [arguments, exitCode, out] = fetch<QStringList, int, QString>("arguments", "exitCode", "out");
        const CliResult result = runCli(arguments);
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(QString::fromUtf8(result.out), out);
        if (exitCode == 2) {
            QVERIFY(result.err.startsWith("error: ") || result.err.startsWith("Usage:"));
        }
    }

    void helpExplains()
    {
        for (const QStringList &arguments :
             {QStringList{QStringLiteral("--help")}, QStringList{QStringLiteral("version"), QStringLiteral("--help")},
              QStringList{QStringLiteral("defaults"), QStringLiteral("read"), QStringLiteral("--help")},
              QStringList{QStringLiteral("help"), QStringLiteral("inspect")}}) {
            const CliResult result = runCli(arguments);
            QCOMPARE(result.exitCode, 0);
            QVERIFY(result.out.startsWith("Usage: velmora-cli"));
        }
    }

    // Commands and options share one column, however long the longest name.
    void helpAlignsItsColumn()
    {
        static const QRegularExpression item(QStringLiteral("^  \\S+ +"), QRegularExpression::MultilineOption);
        QSet<qsizetype> columns;
        for (const QRegularExpressionMatch &match :
             item.globalMatch(QString::fromUtf8(runCli({QStringLiteral("--help")}).out)))
            columns.insert(match.capturedLength());
        QCOMPARE(columns.size(), 1);
    }

    void inspect()
    {
        const QString app =
            PlistFiles::makeBundle(m_root.path() + QStringLiteral("/Good Tool.app"),
                                   PlistFiles::info(QStringLiteral("com.example.good"), QStringLiteral("3.2.1")),
                                   PlistFiles::PlistFormat::Binary);
        const QString folder = m_root.path() + QStringLiteral("/Plain Folder");
        QDir().mkpath(folder);
        // A tab inside a field must not add a field.
        const QString tabbed =
            PlistFiles::makeBundle(m_root.path() + QStringLiteral("/Tab.app"),
                                   PlistFiles::info(QStringLiteral("com.ex\tample"), QStringLiteral("1")));
        const QString broken = m_root.path() + QStringLiteral("/Broken.app");
        PlistFiles::writeFile(broken + QStringLiteral("/Contents/Info.plist"), "<plist><dict><key>oops");

        const CliResult text = runCli({QStringLiteral("inspect"), app, folder, tabbed, broken});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(QString::fromUtf8(text.out), QStringLiteral("Good Tool\tcom.example.good\t3.2.1\tapp\tnot App Store\n"
                                                             "Plain Folder\t-\t-\t-\tnot App Store\n"
                                                             "Tab\tcom.ex ample\t1\tapp\tnot App Store\n"
                                                             "Broken\t-\t-\tapp\tnot App Store\n"));
        QVERIFY2(text.err.count("warning: ") == 2 && text.err.contains("not a bundle"), text.err.constData());

        const CliResult json = runCli({QStringLiteral("inspect"), app, QStringLiteral("--json")});
        QCOMPARE(json.exitCode, 0);
        const QJsonArray records = QJsonDocument::fromJson(json.out).array();
        QCOMPARE(records.size(), 1);
        const QJsonObject record = records.first().toObject();
        QCOMPARE(record.value(QStringLiteral("localPath")).toString(), app);
        QCOMPARE(record.value(QStringLiteral("localVersion")).toString(), QStringLiteral("3.2.1"));
        QVERIFY(QDateTime::fromString(record.value(QStringLiteral("lastModified")).toString(), Qt::ISODateWithMs)
                    .isValid());

        const CliResult missing = runCli({QStringLiteral("inspect"), m_root.path() + QStringLiteral("/Nowhere.app")});
        QCOMPARE(missing.exitCode, 1);
        QVERIFY(missing.out.isEmpty());
        QVERIFY(missing.err.startsWith("error: "));
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
