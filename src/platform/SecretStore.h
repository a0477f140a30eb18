#pragma once

// The user's secret store (the desktop's Secret Service, reached through libsecret): generic items, each a secret
// with a set of text attributes, found by any subset of them. Five operations, as a keychain offers them: add,
// find the first match, delete the first match, find all with their attributes, find one with its secret. Every
// call waits for the store on the calling thread and may run on any thread. Nothing here logs: callers decide
// what a failure is worth, and a secret never reaches a log line from here.

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

namespace SecretStore {

using Attributes = QHash<QString, QString>;

// Status codes, as the keychain names them; 0 is success.
enum Status : int {
    Success = 0,
    ItemNotFound = -25300,
    NotAvailable = -25291, // no store reachable (no session bus, no Secret Service, locked for good)
    IOError = -36,
};

struct Outcome
{
    int status = Success;
    QString message; // the store's own words when status != 0

    bool ok() const { return status == Success; }
};

struct Item
{
    Attributes attributes;
    std::optional<QByteArray> secret; // only when asked for
};

// Adds an item; label is the name a user sees in the store's own tools.
Outcome add(const Attributes &attributes, const QString &label, const QByteArray &secret);
// Deletes the first item whose attributes include these.
Outcome deleteFirst(const Attributes &attributes);
// Every item whose attributes include these, with or without its secret. No match: ItemNotFound.
Outcome findAll(const Attributes &attributes, bool withSecrets, QList<Item> *items);

// The message for a status code of this store.
QString messageForStatus(int status);

} // namespace SecretStore
