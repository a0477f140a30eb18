#pragma once

// One query on the keychain: the attributes it matches by, and save, delete, fetch-one and fetch-all on the items
// that match. Items are generic passwords in the user's secret store (platform/SecretStore), with the attributes
// "acct" (account), "svce" (service), "labl" (label) and "desc" (description). A fresh query per operation: no
// state is shared, so any thread may use one.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

struct SSKeychainError
{
    QString domain;
    int code = 0;
    QString localizedDescription;
};

class SSKeychainQuery
{
public:
    static constexpr char kErrorDomain[] = "com.velmora.sskeychain";
    static constexpr int kBadArguments = -1001;

    // Each is matched only when set (not null).
    QString account;
    QString service;
    QString label;
    QString description;
    std::optional<QByteArray> passwordData;

    // The data as UTF-8 text; null when there is none or it is empty.
    QString password() const;
    void setPassword(const QString &password);
    // Any value QVariant can stream, kept as the item's data.
    QVariant passwordObject() const;
    void setPasswordObject(const QVariant &object);

    // The attributes a search matches by.
    QVariantMap query() const;

    // Each returns success or its result; on failure error (when given) says why.
    bool save(SSKeychainError *error = nullptr);
    bool deleteItem(SSKeychainError *error = nullptr);
    // The attributes of every matching item ("acct", "svce", "labl", "desc"); nullopt on failure or no match.
    std::optional<QList<QVariantMap>> fetchAll(SSKeychainError *error = nullptr);
    bool fetch(SSKeychainError *error = nullptr);

    static SSKeychainError errorWithCode(int code);
};
