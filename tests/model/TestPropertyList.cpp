// Property lists in the forms bundles ship: XML, binary, and old-style .strings text in several encodings.

#include "model/OldStylePlistParser.h"
#include "model/PropertyList.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>

#include <sys/stat.h>

class TestPropertyList : public QObject
{
    Q_OBJECT

private slots:
    void oldStyleText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("expected");

        QTest::newRow("quoted pair") << R"("CFBundleShortVersionString" = "1.5";)"
                                     << "CFBundleShortVersionString" << QVariant(QStringLiteral("1.5"));
        QTest::newRow("comments") << "/* a */ // b\nk /* c */ = \"v\"; // d"
                                  << "k" << QVariant(QStringLiteral("v"));
        QTest::newRow("escapes") << "k = \"a\\\"b\\\\c\\nd\\U00e9\\101\";"
                                 << "k" << QVariant(QStringLiteral("a\"b\\c\nd") + QChar(0xE9) + QStringLiteral("A"));
        QTest::newRow("braced dictionary") << "{ k = v; }"
                                           << "k" << QVariant(QStringLiteral("v"));
        QTest::newRow("array value") << "k = (a, \"b c\");"
                                     << "k" << QVariant(QVariantList{QStringLiteral("a"), QStringLiteral("b c")});
        QTest::newRow("lone key stands for itself") << "\"k\";"
                                                    << "k" << QVariant(QStringLiteral("k"));
    }

    void oldStyleText()
    {
        QFETCH(QString, text);
        QFETCH(QString, key);
        QFETCH(QVariant, expected);
        const auto dict = parseOldStylePlist(text.toUtf8());
        QVERIFY(dict);
        QCOMPARE(dict->value(key), expected);
    }

    void malformedOldStyleText_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("missing semicolon") << QByteArray("k = \"v\"");
        QTest::newRow("unterminated string") << QByteArray("k = \"v;");
        QTest::newRow("missing closing brace") << QByteArray("{ k = v;");
        QTest::newRow("bad escape") << QByteArray("k = \"\\Uzz\";");
        QTest::newRow("stray equals") << QByteArray("= v;");
        QTest::newRow("deep nesting") << QByteArray(200, '(');
    }

    void malformedOldStyleText()
    {
        QFETCH(QByteArray, bytes);
        QString problem;
        QVERIFY(!parseOldStylePlist(bytes, &problem));
        QVERIFY(!problem.isEmpty());
    }

    void encodings_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QString value = QChar(0x65E5) + QStringLiteral("1.0");
        const QString text = QStringLiteral("k = \"") + value + QStringLiteral("\";");
        QTest::newRow("utf-16le with mark")
            << QByteArray("\xFF\xFE") + QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(text));
        QTest::newRow("utf-16be with mark")
            << QByteArray("\xFE\xFF") + QByteArray(QStringEncoder(QStringEncoder::Utf16BE)(text));
        QTest::newRow("utf-16le without mark") << QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(text));
        QTest::newRow("utf-8 with mark") << QByteArray("\xEF\xBB\xBF") + text.toUtf8();
        QTest::newRow("utf-8") << text.toUtf8();
        QTest::newRow("utf-16 xml") << QByteArray("\xFF\xFE") +
                                           QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(
                                               QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><dict>"
                                                              "<key>k</key><string>") +
                                               value + QStringLiteral("</string></dict></plist>")));
        QTest::newRow("binary plist") << PropertyList::toBinary(
            {{QStringLiteral("k"), QString(QChar(0x65E5) + QStringLiteral("1.0"))}});
    }

    void encodings()
    {
        QFETCH(QByteArray, bytes);
        const auto dict = PropertyList::parseStrings(bytes);
        QVERIFY(dict);
        QCOMPARE(dict->value(QStringLiteral("k")).toString(), QString(QChar(0x65E5) + QStringLiteral("1.0")));
    }

    void xmlAndBinaryRoundTrip()
    {
        const QVariantMap dict = {
            {QStringLiteral("s"), QStringLiteral("text")},
            {QStringLiteral("i"), qint64(42)},
            {QStringLiteral("r"), 1.5},
            {QStringLiteral("b"), true},
            {QStringLiteral("d"), QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC)},
            {QStringLiteral("a"), QVariantList{QStringLiteral("x"), qint64(1)}},
            {QStringLiteral("m"), QVariantMap{{QStringLiteral("k"), QStringLiteral("v")}}},
        };
        QCOMPARE(PropertyList::parseDictionary(PropertyList::toXml(dict)), dict);
        QCOMPARE(PropertyList::parseDictionary(PropertyList::toBinary(dict)), dict);
    }

    void rejectedDictionaries_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not a plist") << QByteArray("hello");
        QTest::newRow("truncated xml") << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>a</key>");
        QTest::newRow("truncated binary")
            << PropertyList::toBinary({{QStringLiteral("k"), QStringLiteral("v")}}).left(20);
        QTest::newRow("array root") << QByteArray("<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>");
    }

    void rejectedDictionaries()
    {
        QFETCH(QByteArray, bytes);
        QString problem;
        QVERIFY(!PropertyList::parseDictionary(bytes, &problem));
        QVERIFY(!problem.isEmpty());
    }

    // Lists nested deeper than any real one are refused before parsing: a deep enough one would exhaust the stack.
    void nesting_data()
    {
        // A dictionary holding `arrays` arrays, one inside the other: arrays + 1 levels in all.
        const auto nested = [](int arrays) {
            QVariant value = QVariantList();
            for (int i = 1; i < arrays; ++i) {
                value = QVariantList{value};
            }
            return QVariantMap{{QStringLiteral("k"), value}};
        };
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("xml at the limit") << PropertyList::toXml(nested(511)) << true;
        QTest::newRow("xml past the limit") << PropertyList::toXml(nested(512)) << false;
        QTest::newRow("binary at the limit") << PropertyList::toBinary(nested(511)) << true;
        QTest::newRow("binary past the limit") << PropertyList::toBinary(nested(512)) << false;
        QTest::newRow("tags inside a comment")
            << "<?xml version=\"1.0\"?><plist><dict><!--" + QByteArray("<array>").repeated(600) +
                   "--><key>k</key><array/></dict></plist>"
            << true;
    }

    void nesting()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, accepted);
        QString problem;
        QCOMPARE(PropertyList::parseDictionary(bytes, &problem).has_value(), accepted);
        QCOMPARE(problem == QLatin1String("property list nested too deeply"), !accepted);
    }

    // What a bundle may hold where its property list belongs: none of it may hang the scan or fill the memory.
    void filesThatHoldNoDictionary_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("problem");
        QTest::newRow("missing") << QStringLiteral("missing") << false;
        QTest::newRow("folder") << QStringLiteral("folder") << true;
        QTest::newRow("link to an endless device") << QStringLiteral("device") << true;
        QTest::newRow("pipe without a writer") << QStringLiteral("fifo") << true;
        QTest::newRow("sparse file over the limit") << QStringLiteral("huge") << true;
        QTest::newRow("dangling link") << QStringLiteral("dangling") << false;
    }

    void filesThatHoldNoDictionary()
    {
        QFETCH(QString, kind);
        QFETCH(bool, problem);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Info.plist"));
        if (kind == QLatin1String("folder")) {
            QVERIFY(QDir().mkpath(path));
        } else if (kind == QLatin1String("device")) {
            QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path));
        } else if (kind == QLatin1String("fifo")) {
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        } else if (kind == QLatin1String("huge")) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.resize(qint64(65) * 1024 * 1024));
        } else if (kind == QLatin1String("dangling")) {
            QVERIFY(QFile::link(dir.filePath(QStringLiteral("gone")), path));
        }
        const PropertyList::ReadResult result = PropertyList::readDictionaryFile(path);
        QVERIFY(!result.dictionary);
        QCOMPARE(!result.problem.isEmpty(), problem);
    }
};

VELMORA_TEST_MAIN(TestPropertyList)
#include "TestPropertyList.moc"
