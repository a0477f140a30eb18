#include "support/DataTable.h"
#include "support/TestMain.h"
#include "support/Utf8.h"

#include "model/VersionRules.h"

namespace {

const QString forty = QStringLiteral("1234567890123456789012345678901234567890");
const QString fortyPlusOne = QStringLiteral("1234567890123456789012345678901234567891");

} // namespace

class TestVersionRules : public QObject
{
    Q_OBJECT

private slots:
    void cleanedVersions_data()
    {
        columns<bool, QString, QString>("os", "input", "expected");
        // Texts as bundles write them; the stop texts themselves are a list in the code, not repeated here.
        QTest::newRow("build in brackets") << false << s("Version 2.1.3 (Build 455)") << s("2.1.3");
        QTest::newRow("copyright") << false << s("5.0, © 2010") << s("5.0");
        QTest::newRow("absent") << false << QString() << s("-");
        QTest::newRow("empty") << false << s("") << s("");
        QTest::newRow("leading word") << false << s("v1.2.3") << s("1.2.3");
        QTest::newRow("trailing comma") << false << s("1.2,") << s("1.2");
        QTest::newRow("stops are case-sensitive") << false << s("2.6 BUILD 7") << s("2.6 BUILD 7");
        QTest::newRow("beta kept") << false << s("1.0 beta 2") << s("1.0 beta 2");
        QTest::newRow("earliest stop wins") << false << s("Version 1.0 for Mac by Acme, © 2010") << s("1.0");
        // The system's own version text is cut to its numbers alone.
        QTest::newRow("OS: system text") << true << s("Version 10.9.5 (Build 13F34)") << s("10.9.5");
        QTest::newRow("OS: absent") << true << QString() << s("");
        QTest::newRow("OS: no digit") << true << s("unknown") << s("");
    }

    void cleanedVersions()
    {
        auto [os, input, expected] = fetch<bool, QString, QString>("os", "input", "expected");
        const QString cleaned = os ? ::cleanOSVersion(input) : ::cleanVersionString(input);
        QCOMPARE(cleaned, expected);
        QVERIFY(!cleaned.isNull());
    }

    void orderCompareString_data()
    {
        columns<QString, QString, uint>("a", "b", "expected");
        QTest::newRow("abc10 > abc9") << s("abc10") << s("abc9") << uint(VersionDescending);
        QTest::newRow("letters") << s("abc") << s("ABD") << uint(VersionAscending);
        QTest::newRow("leading zeros") << s("1.01") << s("1.1") << uint(VersionSame);
        QTest::newRow("prefix is smaller") << s("1.2") << s("1.2.1") << uint(VersionAscending);
        QTest::newRow("digit before letter") << s("1") << s("a") << uint(VersionAscending);
        QTest::newRow("40 digits, last differs") << forty << fortyPlusOne << uint(VersionAscending);
        QTest::newRow("40 digits against 39") << forty << forty.left(39) << uint(VersionDescending);
    }
    void orderCompareString()
    {
        auto [a, b, expected] = fetch<QString, QString, uint>("a", "b", "expected");
        QCOMPARE(uint(::orderCompareString(a, b)), expected);
        const uint swapped = expected == VersionSame ? expected : 1 - expected;
        QCOMPARE(uint(::orderCompareString(b, a)), swapped);
    }

    void compareVersionString_data()
    {
        columns<QString, QString, uint>("a", "b", "expected");
        QTest::newRow("identical") << s("1.0") << s("1.0") << uint(VersionSame);
        QTest::newRow("no common prefix, numeric") << s("2.0") << s("10.0") << uint(VersionAscending);
        QTest::newRow("prefix case-insensitive") << s("1.0B") << s("1.0b") << uint(VersionSame);
        QTest::newRow("trimmed between rounds") << s("1.0 b") << s("1.0b") << uint(VersionSame);
        QTest::newRow("longer after dot") << s("1.2") << s("1.2.1") << uint(VersionAscending);
        QTest::newRow("longer after digit") << s("1.2") << s("1.21") << uint(VersionAscending);
        QTest::newRow("longer after dash") << s("1.2") << s("1.2-1") << uint(VersionAscending);
        QTest::newRow("longer after letter") << s("1.2") << s("1.2b") << uint(VersionDescending);
        QTest::newRow("shorter after letter") << s("1.2b") << s("1.2") << uint(VersionAscending);
        QTest::newRow("digit runs") << s("1.2.10") << s("1.2.9") << uint(VersionDescending);
        QTest::newRow("19 against 100") << s("1.19") << s("1.100") << uint(VersionDescending);
        QTest::newRow("separator against letter") << s("1.0.b") << s("1.0b") << uint(VersionDescending);
        QTest::newRow("letters b, a") << s("1.0b") << s("1.0a") << uint(VersionAscending);
        QTest::newRow("digits against letter") << s("1.0.5") << s("1.0.b") << uint(VersionDescending);
    }
    void compareVersionString()
    {
        auto [a, b, expected] = fetch<QString, QString, uint>("a", "b", "expected");
        QCOMPARE(uint(::compareVersionString(a, b)), expected);
    }

    void isLocalVersionOutdated_data()
    {
        columns<QString, QString, bool>("local", "remote", "outdated");
        QTest::newRow("1 absent remote") << s("1.0") << QString() << false;
        QTest::newRow("1 (null)") << s("") << s("(null)") << false;
        QTest::newRow("2 dash local") << s("-") << s("2.0") << false;
        QTest::newRow("2 equal after trim") << s(" 1.0 ") << s("1.0\t") << false;
        QTest::newRow("3 short form") << s("1.23") << s("1.2.4") << true;
        QTest::newRow("3 not greater, falls through") << s("1.25") << s("1.2.4") << false;
        QTest::newRow("4 RC of a point release") << s("2.0.1RC1") << s("2.0") << true;
        QTest::newRow("5 beta spelled out, any case") << s("1.0 Beta 3") << s("1.0b3") << false;
        QTest::newRow("6 any b before any rc") << s("3.0b1") << s("2.0rc1") << true;
        QTest::newRow("7 trailing .0") << s("2.1") << s("2.1.0") << false;
        QTest::newRow("7 two trailing .0") << s("2.1") << s("2.1.0.0") << true;
        QTest::newRow("8 trailing a") << s("2.1") << s("2.1a") << true;
        QTest::newRow("9 BETA of newer") << s("2.0.1.BETA-3") << s("2.0") << false;
        QTest::newRow("9 lower-case mark") << s("2.0.beta-3") << s("2.0") << true;
        QTest::newRow("10 beta of a point release") << s("2.0.1b1") << s("2.0") << true;
        QTest::newRow("11 longer") << s("1.2") << s("1.2.1") << true;
        QTest::newRow("11 final against beta") << s("3.0") << s("3.0b2") << false;
        QTest::newRow("absent local") << QString() << s("1.0") << false;
        // An empty remote is found in every text: the beta and rc rules must not take that as a match.
        QTest::newRow("empty remote") << s("1.0b1") << s("") << false;
    }
    void isLocalVersionOutdated()
    {
        auto [local, remote, outdated] = fetch<QString, QString, bool>("local", "remote", "outdated");
        QCOMPARE(isLocalVersionOutdatedByRemoteVersion(local, remote), outdated);
    }
};

VELMORA_TEST_MAIN(TestVersionRules)
#include "TestVersionRules.moc"
