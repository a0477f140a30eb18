#pragma once

// The keychain operations the account uses, each one fresh SSKeychainQuery filled and run. error may be null.

#include "services/SSKeychainQuery.h"

namespace VLKeychain {

inline constexpr char kInternetPassword[] = "Internet Password";

QString passwordForService(const QString &service, const QString &account, SSKeychainError *error = nullptr);
QString passwordForLabel(const QString &label, const QString &account, SSKeychainError *error = nullptr);
bool deletePasswordForService(const QString &service, const QString &account, SSKeychainError *error = nullptr);
bool deletePasswordForLabel(const QString &label, const QString &account, SSKeychainError *error = nullptr);
bool setPasswordForService(const QString &password, const QString &service, const QString &account,
                           SSKeychainError *error = nullptr);
bool setPasswordForServiceAccountDesc(const QString &password, const QString &service, const QString &account,
                                      const QString &desc, SSKeychainError *error = nullptr);
// Fails with the argument error: no service is set.
bool setPasswordForAccountDesc(const QString &password, const QString &account, const QString &desc,
                               SSKeychainError *error = nullptr);
// The attributes of each item; empty when none (or no keychain).
QList<QVariantMap> accountsForService(const QString &service);
QList<QVariantMap> accountsForLabel(const QString &label);
QList<QVariantMap> allAccounts();

} // namespace VLKeychain
