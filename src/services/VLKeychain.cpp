#include "services/VLKeychain.h"

namespace {

const QString internetPassword = QString::fromLatin1(VLKeychain::kInternetPassword);

QString fetchedPassword(SSKeychainQuery &query, SSKeychainError *error)
{
    return query.fetch(error) ? query.password() : QString();
}

bool save(const QString &password, const QString &service, const QString &account, const QString &desc,
          SSKeychainError *error)
{
    SSKeychainQuery query;
    query.service = service;
    query.account = account;
    query.description = desc;
    query.setPassword(password);
    return query.save(error);
}

} // namespace

namespace VLKeychain {

QString passwordForService(const QString &service, const QString &account, SSKeychainError *error)
{
    SSKeychainQuery query;
    query.service = service;
    query.account = account;
    query.description = internetPassword;
    return fetchedPassword(query, error);
}

QString passwordForLabel(const QString &label, const QString &account, SSKeychainError *error)
{
    SSKeychainQuery query;
    query.label = label;
    query.account = account;
    query.description = internetPassword;
    return fetchedPassword(query, error);
}

bool deletePasswordForService(const QString &service, const QString &account, SSKeychainError *error)
{
    SSKeychainQuery query;
    query.service = service;
    query.account = account;
    return query.deleteItem(error);
}

bool deletePasswordForLabel(const QString &label, const QString &account, SSKeychainError *error)
{
    SSKeychainQuery query;
    query.label = label;
    query.account = account;
    query.description = internetPassword;
    return query.deleteItem(error);
}

bool setPasswordForService(const QString &password, const QString &service, const QString &account,
                           SSKeychainError *error)
{
    return save(password, service, account, QString(), error);
}

bool setPasswordForServiceAccountDesc(const QString &password, const QString &service, const QString &account,
                                      const QString &desc, SSKeychainError *error)
{
    return save(password, service, account, desc, error);
}

bool setPasswordForAccountDesc(const QString &password, const QString &account, const QString &desc,
                               SSKeychainError *error)
{
    return save(password, QString(), account, desc, error);
}

QList<QVariantMap> accountsForService(const QString &service)
{
    SSKeychainQuery query;
    query.service = service;
    return query.fetchAll().value_or(QList<QVariantMap>());
}

QList<QVariantMap> accountsForLabel(const QString &label)
{
    SSKeychainQuery query;
    query.label = label;
    query.description = internetPassword;
    return query.fetchAll().value_or(QList<QVariantMap>());
}

QList<QVariantMap> allAccounts()
{
    return accountsForService(QString());
}

} // namespace VLKeychain
