#pragma once

#include "wire/ZlibJoin.h"

// The catalogue in memory, as matching and the replies need it: each record with its short-key members
// encoded once, and one lookup table per matching key. Immutable once built, so threads share it freely.

#include "storage/Storage.h"

#include <QHash>

#include <vector>

struct CatalogueEntry
{
    QString id;
    QJsonObject record;        // long keys, with the hash and size of files the service serves filled in
    QByteArray encodedMembers; // the short-key members except "e1", "h" and "i", without braces
    // The reply's members after "h" and "i" ("e1" when the link is elsewhere, encodedMembers, the closing brace),
    // compressed once for every matching reply.
    ZlibJoin::Fragment replyTail;
    QString link; // as stored: absolute, or a path on this service
    bool isBeta = false;
    // A link on this service, JSON-escaped and without the opening quote, for a reply to put after its own base
    // address; empty when the link is elsewhere.
    QByteArray localLinkJson;
};

// What an app of a matching request says about itself, as UTF-8.
struct AppDescription
{
    QByteArrayView bundleId;    // "b"
    QByteArrayView bundleName;  // "t", the bundle's file name such as Foo.app
    QByteArrayView displayName; // "d"
};

class CatalogueIndex
{
public:
    explicit CatalogueIndex(std::vector<CatalogueEntry> entries);

    // Bundle identifier first, then bundle file name, then display name; each compared case-insensitively.
    const CatalogueEntry *match(const AppDescription &app) const;
    const CatalogueEntry *byId(const QString &id) const;
    const std::vector<CatalogueEntry> &entries() const { return m_entries; }

private:
    struct Candidate
    {
        int entry = -1;
        int position = 0; // where the key stands in the record's own list: a main app's id comes first
    };
    // Keyed by the folded key's UTF-8, so that a request's bytes are looked up without becoming a text.
    using Table = QHash<QByteArray, Candidate>;
    void add(Table &table, const QJsonValue &keys, int entry);
    bool better(const Candidate &a, const Candidate &b) const;
    const CatalogueEntry *lookup(const Table &table, QByteArrayView key) const;

    std::vector<CatalogueEntry> m_entries;
    QHash<QString, int> m_byId;
    Table m_byBundleId;
    Table m_byBundleName;
    Table m_byDisplayName;
};

// The record's main bundle identifier (the first listed), or "".
QString firstBundleId(const QJsonObject &record);

// The short-key members of a record for the matching reply (see CatalogueEntry::encodedMembers).
QByteArray encodeShortKeyMembers(const QString &id, const QJsonObject &record);
