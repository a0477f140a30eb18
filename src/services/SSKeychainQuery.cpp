#include "services/SSKeychainQuery.h"

#include "platform/SecretStore.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>

namespace {

SecretStore::Attributes attributesOf(const SSKeychainQuery &query)
{
    SecretStore::Attributes attributes;
    const QVariantMap map = query.query();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        attributes.insert(it.key(), it.value().toString());
    }
    return attributes;
}

bool fail(SSKeychainError *error, int code)
{
    if (error) {
        *error = SSKeychainQuery::errorWithCode(code);
    }
    return false;
}

bool finish(const SecretStore::Outcome &outcome, SSKeychainError *error)
{
    if (outcome.ok()) {
        return true;
    }
    if (error) {
        *error = {QString::fromLatin1(SSKeychainQuery::kErrorDomain), outcome.status, outcome.message};
    }
    return false;
}

} // namespace

QString SSKeychainQuery::password() const
{
    if (!passwordData || passwordData->isEmpty()) {
        return QString();
    }
    return QString::fromUtf8(*passwordData);
}

void SSKeychainQuery::setPassword(const QString &password)
{
    passwordData = password.toUtf8();
}

QVariant SSKeychainQuery::passwordObject() const
{
    if (!passwordData || passwordData->isEmpty()) {
        return QVariant();
    }
    QDataStream stream(*passwordData);
    QVariant object;
    stream >> object;
    return stream.status() == QDataStream::Ok ? object : QVariant();
}

void SSKeychainQuery::setPasswordObject(const QVariant &object)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << object;
    passwordData = bytes;
}

QVariantMap SSKeychainQuery::query() const
{
    QVariantMap map;
    const auto put = [&map](const char *key, const QString &value) {
        if (!value.isNull()) {
            map.insert(QString::fromLatin1(key), value);
        }
    };
    put("svce", service);
    put("acct", account);
    put("labl", label);
    put("desc", description);
    return map;
}

bool SSKeychainQuery::save(SSKeychainError *error)
{
    if (service.isNull() || account.isNull() || !passwordData) {
        return fail(error, kBadArguments);
    }
    // Saving replaces: the first item of this service and account goes first.
    SSKeychainQuery existing;
    existing.service = service;
    existing.account = account;
    existing.deleteItem();
    // An item without a label of its own is labelled with its service, as a keychain labels one.
    const QString visibleLabel = label.isNull() ? service : label;
    SecretStore::Attributes attributes = attributesOf(*this);
    attributes.insert(QStringLiteral("labl"), visibleLabel);
    return finish(SecretStore::add(attributes, visibleLabel, *passwordData), error);
}

bool SSKeychainQuery::deleteItem(SSKeychainError *error)
{
    if (account.isNull()) {
        return fail(error, kBadArguments);
    }
    return finish(SecretStore::deleteFirst(attributesOf(*this)), error);
}

std::optional<QList<QVariantMap>> SSKeychainQuery::fetchAll(SSKeychainError *error)
{
    QList<SecretStore::Item> items;
    if (!finish(SecretStore::findAll(attributesOf(*this), false, &items), error)) {
        return std::nullopt;
    }
    QList<QVariantMap> found;
    for (const SecretStore::Item &item : items) {
        QVariantMap attributes;
        for (auto it = item.attributes.cbegin(); it != item.attributes.cend(); ++it) {
            attributes.insert(it.key(), it.value());
        }
        found.append(attributes);
    }
    return found;
}

bool SSKeychainQuery::fetch(SSKeychainError *error)
{
    if (account.isNull()) {
        return fail(error, kBadArguments);
    }
    QList<SecretStore::Item> items;
    if (!finish(SecretStore::findAll(attributesOf(*this), true, &items), error)) {
        return false;
    }
    passwordData = items.first().secret;
    return true;
}

SSKeychainError SSKeychainQuery::errorWithCode(int code)
{
    const QString message = code == kBadArguments
                                ? QCoreApplication::translate("SSKeychainQuery", "Some of the arguments were invalid")
                                : SecretStore::messageForStatus(code);
    return {QString::fromLatin1(kErrorDomain), code, message};
}
