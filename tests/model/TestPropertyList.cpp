// Property lists in the forms bundles ship: XML, binary, and old-style .strings text in several encodings.

#include "model/OldStylePlistParser.h"
#include "model/PlistBudget.h"
#include "model/PropertyList.h"
#include "support/DataTable.h"
#include "support/PlistFiles.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

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
        // Every row reads the key "k".
        columns<QString, QVariant>("text", "expected");
        QTest::newRow("quoted pair") << s(R"("k" = "1.5";)") << QVariant(s("1.5"));
        QTest::newRow("comments") << s("/* a */ // b\nk /* c */ = \"v\"; // d") << QVariant(s("v"));
        QTest::newRow("escapes") << s("k = \"a\\\"b\\\\c\\nd\\U00e9\\101\";") << QVariant(s("a\"b\\c\nd\u00e9A"));
        QTest::newRow("braced dictionary") << s("{ k = v; }") << QVariant(s("v"));
        QTest::newRow("array value") << s("k = (a, \"b c\");") << QVariant(QVariantList{s("a"), s("b c")});
        QTest::newRow("lone key stands for itself") << s("\"k\";") << QVariant(s("k"));
        QTest::newRow("data value") << s("k = <0aFF 10>;") << QVariant(QByteArray("\x0a\xff\x10"));
    }

    void oldStyleText()
    {
        auto [text, expected] = fetch<QString, QVariant>("text", "expected");
        const auto dict = parseOldStylePlist(text);
        QVERIFY(dict);
        QCOMPARE(dict->value(QStringLiteral("k")), expected);
    }

    void malformedOldStyleText_data()
    {
        columns<QString>("text");
        QTest::newRow("missing semicolon") << "k = \"v\"";
        QTest::newRow("unterminated string") << "k = \"v;";
        QTest::newRow("missing closing brace") << "{ k = v;";
        QTest::newRow("bad escape") << "k = \"\\Uzz\";";
        QTest::newRow("stray equals") << "= v;";
        QTest::newRow("odd data") << "k = <0a0>;";
    }

    void malformedOldStyleText()
    {
        QString problem;
        QVERIFY(!parseOldStylePlist(std::get<0>(fetch<QString>("text")), &problem));
        QVERIFY(!problem.isEmpty());
    }

    // Every form the platform's reader takes is a dictionary here too, with its text decoded as declared.
    void encodings_data()
    {
        columns<QByteArray, QString>("bytes", "expected");
        const QString value = QChar(0x65E5) + QStringLiteral("1.0");
        const QString text = QStringLiteral("k = \"") + value + QStringLiteral("\";");
        const QString xml =
            QStringLiteral("<plist><dict><key>k</key><string>") + value + QStringLiteral("</string></dict></plist>");
        const auto utf16 = [](QStringConverter::Encoding encoding, const QString &text) {
            return QByteArray(QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(text));
        };
        QTest::newRow("utf-16le with mark") << utf16(QStringConverter::Utf16LE, text) << value;
        QTest::newRow("utf-16be with mark") << utf16(QStringConverter::Utf16BE, text) << value;
        QTest::newRow("utf-16le without mark") << QByteArray(QStringEncoder(QStringEncoder::Utf16LE)(text)) << value;
        QTest::newRow("utf-8 with mark") << QByteArray("\xEF\xBB\xBF") + text.toUtf8() << value;
        QTest::newRow("utf-8") << text.toUtf8() << value;
        QTest::newRow("old-style braced dictionary") << "{ " + text.toUtf8() + " }" << value;
        row("utf-16 xml",
            utf16(QStringConverter::Utf16LE, QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?>") + xml),
            value);
        QTest::newRow("binary plist") << PropertyList::toBinary({{QStringLiteral("k"), value}}) << value;
        row("xml with utf-8 mark", "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + xml.toUtf8(), value);
        QTest::newRow("xml after a comment") << "<!-- made by hand -->\n" + xml.toUtf8() << value;
        row("xml declaration after white space and a comment",
            "\n <!-- c --><?xml version=\"1.0\" encoding=\"UTF-8\"?>" + xml.toUtf8(), value);
        row("xml references and character data",
            QByteArray("<plist><dict><key>k</key><string>&lt;&#xA9;&#233;&amp;<![CDATA[<b>&amp;]]><!-- c --></string>"
                       "</dict></plist>"),
            QStringLiteral("<\u00A9\u00E9&<b>&amp;"));
        const QByteArray copyright = "<plist><dict><key>k</key><string>\xA9 2.0</string></dict></plist>";
        row("xml in ISO-8859-1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + copyright,
            QStringLiteral("\u00A9 2.0"));
        row("xml in macintosh",
            "<?xml version=\"1.0\" encoding=\"macintosh\"?>" + QByteArray(copyright).replace("\xA9", "\xA9\x8E"),
            QStringLiteral("\u00A9\u00E9 2.0"));
    }

    void encodings()
    {
        auto [bytes, expected] = fetch<QByteArray, QString>("bytes", "expected");
        QString problem;
        const auto dict = PropertyList::parseDictionary(bytes, &problem);
        QVERIFY2(dict, qPrintable(problem));
        QCOMPARE(dict->value(QStringLiteral("k")).toString(), expected);
    }

    // A binary key in UTF-16 holding U+0000 once stopped every scan that met it (an assertion in the library reader).
    void binaryKeyHoldingNul()
    {
        const auto dict = PropertyList::parseDictionary(
            QByteArray::fromBase64("YnBsaXN0MDDRAQJjAGEAAADpUXgICxIAAAAAAAABAQAAAAAAAAADAAAAAAAAAAAAAAAAAAAAFA=="));
        QVERIFY(dict);
        QCOMPARE(dict->value(QStringView(u"a\0\u00e9", 3).toString()).toString(), QStringLiteral("x"));
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
        columns<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not a plist") << QByteArray("hello");
        QTest::newRow("truncated xml") << QByteArray("<?xml version=\"1.0\"?><plist><dict><key>a</key>");
        row("truncated binary", PropertyList::toBinary({{QStringLiteral("k"), QStringLiteral("v")}}).left(20));
        QTest::newRow("array root") << QByteArray("<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>");
        QTest::newRow("entity declared") << QByteArray("<!DOCTYPE plist [<!ENTITY v \"1.0\">]><plist><dict><key>k</key>"
                                                       "<string>&v;</string></dict></plist>");
        QTest::newRow("undeclared entity") << QByteArray("<!DOCTYPE plist SYSTEM \"x.dtd\"><plist><dict><key>k</key>"
                                                         "<string>&v;</string></dict></plist>");
        PlistFiles::BinaryPlist loop; // a dictionary whose value is the dictionary itself
        loop.dict({loop.string("k")}, {1});
        QTest::newRow("binary loop") << loop.bytes();
    }

    void rejectedDictionaries()
    {
        QString problem;
        QVERIFY(!PropertyList::parseDictionary(std::get<0>(fetch<QByteArray>("bytes")), &problem));
        QVERIFY(!problem.isEmpty());
    }

    // Lists past a bound are refused, not parsed to the end: depth (the readers recurse once per level) and objects
    // (a shared binary object counts once for each place that refers to it).
    void bounds_data()
    {
        // A dictionary holding `arrays` arrays, one inside the other: arrays + 1 levels in all.
        const auto nested = [](int arrays) {
            QVariant value = QVariantList();
            for (int i = 1; i < arrays; ++i) {
                value = QVariantList{value};
            }
            return QVariantMap{{QStringLiteral("k"), value}};
        };
        columns<QByteArray, QString>("bytes", "problem"); // problem: "" when accepted
        QTest::newRow("xml at the limit") << PropertyList::toXml(nested(511)) << "";
        QTest::newRow("xml past the limit") << PropertyList::toXml(nested(512)) << PlistBudget::tooDeep();
        QTest::newRow("binary at the limit") << PropertyList::toBinary(nested(511)) << "";
        QTest::newRow("binary past the limit") << PropertyList::toBinary(nested(512)) << PlistBudget::tooDeep();
        QTest::newRow("old-style past the limit") << "k = " + QByteArray(512, '(') + QByteArray(512, ')') + ";"
                                                  << PlistBudget::tooDeep() + QStringLiteral(" at character 515");
        row("tags inside a comment",
            "<?xml version=\"1.0\"?><plist><dict><!--" + QByteArray("<array>").repeated(600) +
                "--><key>k</key><array/></dict></plist>",
            "");
        for (const PlistFiles::HostileList &list : PlistFiles::hostileLists()) {
            QTest::newRow(list.name) << list.bytes << list.problem;
        }
    }

    void bounds()
    {
        auto [bytes, problem] = fetch<QByteArray, QString>("bytes", "problem");
        QString why;
        QCOMPARE(PropertyList::parseDictionary(bytes, &why).has_value(), problem.isEmpty());
        QCOMPARE(why, problem);
    }

    // What a bundle may hold where its property list belongs: none of it may hang the scan or fill the memory.
    void filesThatHoldNoDictionary_data()
    {
        columns<QString, bool>("kind", "problem");
        QTest::newRow("missing") << s("missing") << false;
        QTest::newRow("folder") << s("folder") << true;
        QTest::newRow("link to an endless device") << s("device") << true;
        QTest::newRow("pipe without a writer") << s("fifo") << true;
        QTest::newRow("sparse file over the limit") << s("huge") << true;
        QTest::newRow("dangling link") << s("dangling") << false;
    }

    void filesThatHoldNoDictionary()
    {
        auto [kind, problem] = fetch<QString, bool>("kind", "problem");
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
