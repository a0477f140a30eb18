// The keychain on a real Secret Service (gnome-keyring in a session bus of the test's own).

#include "services/VLKeychain.h"
#include "support/DataTable.h"
#include "support/KeyringSession.h"

namespace {
const QString service = QStringLiteral("Velmora Desktop");
const QString desc = QString::fromLatin1(VLKeychain::kInternetPassword);
} // namespace

class TestVLKeychain : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        for (const QVariantMap &item : VLKeychain::allAccounts()) {
            SSKeychainQuery query;
            query.account = item.value(QStringLiteral("acct")).toString();
            query.deleteItem();
        }
    }

    void saveAndFetch_data()
    {
        columns<QStringList, QString, int>("passwords", "fetched", "code");
        QTest::newRow("second save replaces the first")
            << QStringList{QStringLiteral("one"), QStringLiteral("two")} << "two" << 0;
        QTest::newRow("empty password is kept") << QStringList{QStringLiteral("")} << QString() << 0;
        QTest::newRow("no password: argument error")
            << QStringList{} << QString() << int(SSKeychainQuery::kBadArguments);
    }
    void saveAndFetch()
    {
        auto [passwords, fetched, code] = fetch<QStringList, QString, int>("passwords", "fetched", "code");
        SSKeychainError error;
        bool saved = true;
        for (const QString &password : passwords) {
            saved = VLKeychain::setPasswordForServiceAccountDesc(password, service, QStringLiteral("a@b.com"), desc,
                                                                 &error);
        }
        if (passwords.isEmpty()) {
            SSKeychainQuery query;
            query.service = service;
            query.account = QStringLiteral("a@b.com");
            saved = query.save(&error);
        }
        QCOMPARE(saved, code == 0);
        QCOMPARE(error.code, code);
        if (code != 0) {
            QCOMPARE(error.localizedDescription, QStringLiteral("Some of the arguments were invalid"));
            QCOMPARE(error.domain, QStringLiteral("com.velmora.sskeychain"));
            return;
        }
        const QList<QVariantMap> accounts = VLKeychain::accountsForLabel(service);
        QCOMPARE(accounts.size(), 1);
        QCOMPARE(VLKeychain::allAccounts().size(), 1);
        QCOMPARE(accounts.first().value(QStringLiteral("labl")).toString(), service);
        QCOMPARE(accounts.first().value(QStringLiteral("acct")).toString(), QStringLiteral("a@b.com"));
        const QString password = VLKeychain::passwordForLabel(service, QStringLiteral("a@b.com"));
        QCOMPARE(password, fetched);
        QCOMPARE(password.isNull(), fetched.isNull());
        QVERIFY(VLKeychain::deletePasswordForLabel(service, QStringLiteral("a@b.com")));
        QVERIFY(VLKeychain::accountsForLabel(service).isEmpty());
    }

    void missingItemAndNoServiceName()
    {
        SSKeychainError error;
        QVERIFY(VLKeychain::passwordForService(service, QStringLiteral("nobody"), &error).isNull());
        QCOMPARE(error.code, -25300);
        QVERIFY(!VLKeychain::setPasswordForAccountDesc(QStringLiteral("pw"), QStringLiteral("x"), desc, &error));
        QCOMPARE(error.code, int(SSKeychainQuery::kBadArguments));
    }
};

VELMORA_KEYRING_TEST_MAIN(TestVLKeychain)
#include "TestVLKeychain.moc"
