// The text helpers: each must keep absent (null) and empty ("") apart, and read only what it is meant to.

#include "support/DataTable.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include "model/StringUtils.h"

class TestStringUtils : public QObject
{
    Q_OBJECT

private slots:
    void textHelpers_data()
    {
        columns<QString, QString, QString>("function", "input", "expected");
        QTest::newRow("trim") << s("trim") << s(" \t a b \r\n") << s("a b");
        QTest::newRow("trim to empty") << s("trim") << s("\n\t ") << s("");
        QTest::newRow("trim absent") << s("trim") << QString() << QString();
        QTest::newRow("returns, blanks kept") << s("returns") << s(" a\tb\rc\n ") << s(" abc ");
        QTest::newRow("returns to empty") << s("returns") << s("\t\r\n") << s("");
        QTest::newRow("url escapes reserved")
            << s("url") << s("a b&c=d+e/f?g#h%") << s("a%20b%26c%3Dd%2Be%2Ff%3Fg%23h%25");
        QTest::newRow("url keeps unreserved") << s("url") << s("AZaz09-._~") << s("AZaz09-._~");
        // Other scripts go out as their UTF-8 bytes; a lone surrogate has none.
        QTest::newRow("url UTF-8") << s("url") << s("Zo\u00eb \u00c9t\u00e9 \U0001F40D")
                                   << s("Zo%C3%AB%20%C3%89t%C3%A9%20%F0%9F%90%8D");
        QTest::newRow("url unpaired surrogate") << s("url") << QString(QChar(0xdc00)) << QString();
        QTest::newRow("url empty") << s("url") << s("") << s("");
        QTest::newRow("url absent") << s("url") << QString() << QString();
        // The digest of the UTF-8 bytes; a lone surrogate has none, and a replacement would be another text's.
        QTest::newRow("md5 UTF-8") << s("md5") << s("\u00e9") << s("66ddcd97cfdeabb2f6fb8a999b4bc76f");
        QTest::newRow("md5 unpaired surrogate") << s("md5") << QString(QChar(0xd800)) << QString();
        QTest::newRow("md5 absent") << s("md5") << QString() << QString();
    }
    void textHelpers()
    {
        auto [function, input, expected] = fetch<QString, QString, QString>("function", "input", "expected");
        QString actual;
        if (function == u"trim")
            actual = trimmedString(input);
        else if (function == u"returns")
            actual = removeTabsAndReturns(input);
        else if (function == u"url")
            actual = urlEncodeValue(input);
        else
            actual = md5HexHash(input);
        QCOMPARE(actual, expected);
        QCOMPARE(actual.isNull(), expected.isNull());
    }

    void containsString_data()
    {
        columns<QString, QString, bool, bool>("text", "other", "ignoringCase", "expected");
        QTest::newRow("case sensitive") << s("Hello") << s("ELL") << false << false;
        QTest::newRow("case ignored") << s("Hello") << s("ELL") << true << true;
        QTest::newRow("empty never found") << s("Hello") << s("") << false << false;
        QTest::newRow("absent never found") << s("Hello") << QString() << true << false;
    }
    void containsString()
    {
        auto [text, other, ignoringCase, expected] =
            fetch<QString, QString, bool, bool>("text", "other", "ignoringCase", "expected");
        QCOMPARE(::containsString(text, other, ignoringCase), expected);
    }

    void firstDigitIsAscii()
    {
        QCOMPARE(firstDigit(s("Version \u0663.\u0660 2.1")), 12); // Arabic-Indic digits start nothing
        QCOMPARE(firstDigit(s("beta")), -1);
    }

    void base64KeepsEmptyAndSkipsStrayCharacters()
    {
        QVERIFY(!base64Encoding(QByteArray()).isNull());
        QCOMPARE(dataWithBase64EncodedString(s("AP\r\n *v//g==")), QByteArray("\x00\xfb\xff\xfe", 4));
        QVERIFY(!dataWithBase64EncodedString(s("")).isNull());
        QVERIFY(dataWithBase64EncodedString(QString()).isNull());
    }
};

VELMORA_TEST_MAIN(TestStringUtils)
#include "TestStringUtils.moc"
