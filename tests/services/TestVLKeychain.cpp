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
        columns<QStringList, QString>("passwords", "fetched");
        row("second save replaces the first", QStringList{QStringLiteral("one"), QStringLiteral("two")}, "two");
        row("empty password is kept", QStringList{QStringLiteral("")}, QString());
    }
    void saveAndFetch()
    {
        auto [passwords, fetched] = fetch<QStringList, QString>("passwords", "fetched");
        for (const QString &password : passwords) {
            SSKeychainError error;
            QVERIFY(VLKeychain::setPasswordForServiceAccountDesc(password, service, QStringLiteral("a@b.com"), desc,
                                                                 &error));
            QCOMPARE(error.code, 0);
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

    // Each refusal sets its own code over the one before.
    void refusals()
    {
        SSKeychainError error;
        SSKeychainQuery noPassword;
        noPassword.service = service;
        noPassword.account = QStringLiteral("a@b.com");
        QVERIFY(!noPassword.save(&error));
        QCOMPARE(error.code, int(SSKeychainQuery::kBadArguments));
        QCOMPARE(error.localizedDescription, QStringLiteral("Some of the arguments were invalid"));
        QCOMPARE(error.domain, QStringLiteral("com.velmora.sskeychain"));
        QVERIFY(VLKeychain::passwordForService(service, QStringLiteral("nobody"), &error).isNull());
        QCOMPARE(error.code, -25300);
        QVERIFY(!VLKeychain::setPasswordForAccountDesc(QStringLiteral("pw"), QStringLiteral("x"), desc, &error));
        QCOMPARE(error.code, int(SSKeychainQuery::kBadArguments));
    }
};

VELMORA_KEYRING_TEST_MAIN(TestVLKeychain)
#include "TestVLKeychain.moc"
