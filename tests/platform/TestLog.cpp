// Secrets never reach a log line: passwords, their MD5s, cookie values and tokens, in paths, forms and headers.

#include "platform/Log.h"
#include "support/DataTable.h"
#include "support/TestMain.h"

class TestLog : public QObject
{
    Q_OBJECT

private slots:
    void redactSecrets_data()
    {
        columns<QString, QString>("line", "expected");
        const char *md5 = "0123456789abcdef0123456789ABCDEF";
        row("sign-up password, escaped slash inside",
            "GET https://h/vld6member/signup/e/a%40b.c/p/pa%2Fss%20w/f/Ann/l/Lee failed",
            "GET https://h/vld6member/signup/e/a%40b.c/p/***/f/Ann/l/Lee failed");
        row("sign-up campaign cookie runs to the end", "/vld6member/signup/e/x/p/y/f/A/l/B/utmz/YWJj/ZA+==?q=1",
            "/vld6member/signup/e/x/p/***/f/A/l/B/utmz/***?q=1");
        row("log-in MD5 pair",
            qPrintable(QStringLiteral("/vld6member/jlogincheck2/u/%1/p/%1/vld/6.0.4/c/S").arg(QLatin1String(md5))),
            "/vld6member/jlogincheck2/u/***/p/***/vld/6.0.4/c/S");
        row("cookie log-in", "/vld6member/jlogincheckcookie/u/12345/p/tok3n/vld/6.0.4",
            "/vld6member/jlogincheckcookie/u/***/p/***/vld/6.0.4");
        row("path written into a query",
            "go?to=https%3A%2F%2Fh%2Fvld6member%2Fsignup%2Fe%2Fx%2Fp%2Fpa%252Fss%2Ff%2FAnn&z=1",
            "go?to=https%3A%2F%2Fh%2Fvld6member%2Fsignup%2Fe%2Fx%2Fp%2F***%2Ff%2FAnn&z=1");
        row("member name inside a member path", "/vld6member/signup/e/vld6member/p/pw",
            "/vld6member/signup/e/vld6member/p/***");
        row("token segment", "/api/token/abc.def/next", "/api/token/***/next");
        row("form fields", "email=a%40b.c&password=hunter2&access_token=xyz&first=A",
            "email=a%40b.c&password=***&access_token=***&first=A");
        row("cookie header", "Cookie: login=12345%3Aabc; m604=1", "Cookie: ***");
        row("bearer", "Authorization: Bearer abc.def", "Authorization: ***");
        row("bare MD5", qPrintable(QStringLiteral("z %1 end").arg(QLatin1String(md5))), "z *** end");
        row("nothing secret", "/home/p/Foo.app 1.2 /vld6watchlists/rwl", "/home/p/Foo.app 1.2 /vld6watchlists/rwl");
    }

    void redactSecrets()
    {
        auto [line, expected] = fetch<QString, QString>("line", "expected");
        QCOMPARE(::redactSecrets(line), expected);
    }

    void everyLogLineIsRedacted()
    {
        QTest::ignoreMessage(QtInfoMsg, "Connection failed! /vld6member/signup/e/x/p/***/f/A");
        vlLog(QStringLiteral("Connection failed! /vld6member/signup/e/x/p/secret/f/A"));
    }
};

VELMORA_TEST_MAIN(TestLog)
#include "TestLog.moc"
