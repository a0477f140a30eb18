// Cookies kept across runs: only the persistent ones, in a file private to the user.

#include "platform/CookieFile.h"
#include "platform/HttpCookieJar.h"
#include "support/TestMain.h"

#include <QFileInfo>
#include <QNetworkCookie>

class TestCookieFile : public QObject
{
    Q_OBJECT

private slots:
    void keepsPersistentCookies()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        QList<QNetworkCookie> cookies;
        for (const auto &[name, expiry] : {std::pair{"login", now.addDays(30)}, std::pair{"session", QDateTime()},
                                           std::pair{"expired", now.addSecs(-10)}}) {
            QNetworkCookie cookie(name, "12345%3Aabc");
            cookie.setDomain(QStringLiteral("127.0.0.1"));
            cookie.setPath(QStringLiteral("/"));
            cookie.setExpirationDate(expiry);
            cookies.append(cookie);
        }
        HttpCookieJar::shared().setCookies(cookies);
        QVERIFY(CookieFile::save());
        QCOMPARE(QFileInfo(CookieFile::path()).permissions() &
                     ~(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser),
                 QFile::Permissions());
        HttpCookieJar::shared().setCookies({});
        CookieFile::load();
        const QList<QNetworkCookie> loaded = HttpCookieJar::shared().cookies();
        QCOMPARE(loaded.size(), 1);
        QCOMPARE(loaded.first().name(), QByteArray("login"));
        QCOMPARE(loaded.first().value(), QByteArray("12345%3Aabc"));
        QCOMPARE(loaded.first().domain(), QStringLiteral("127.0.0.1"));
    }
};

VELMORA_TEST_MAIN(TestCookieFile)
#include "TestCookieFile.moc"
