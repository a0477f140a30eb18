#pragma once

// What the service keeps, as interfaces per area. The HTTP side sees only these, so another database
// (several service processes sharing one server) is a second implementation of the same interfaces.

#include "storage/CrashStore.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

struct StoredApp
{
    QString id;         // decimal text
    QString sourceKey;  // the record's own key, which keeps its id stable across imports
    QJsonObject record; // long keys, as imported
};

struct ImportApp
{
    QString id; // empty: keep the id the key already has, or assign a new one
    QString sourceKey;
    QJsonObject record;
};

struct CatalogueImport
{
    QList<ImportApp> apps;
    QStringList blacklist;
    QList<QPair<QString, QStringList>> bundles; // bundle id, catalogue ids
};

struct ImportSummary
{
    int added = 0;
    int changed = 0;
    int unchanged = 0;
    QString error; // set when nothing was written
};

class CatalogueStore
{
public:
    virtual ~CatalogueStore() = default;
    // Writes the whole import in one transaction, or nothing.
    virtual ImportSummary importCatalogue(const CatalogueImport &import) = 0;
    virtual QList<StoredApp> apps() = 0;
    virtual std::optional<StoredApp> app(const QString &id) = 0;
    // Grows with every import that changed something; readers rebuild their caches when it moves.
    virtual qint64 revision() = 0;
    virtual QStringList blacklist() = 0;
    virtual bool addToBlacklist(const QString &name) = 0;
    virtual bool removeFromBlacklist(const QString &name) = 0;
    virtual std::optional<QStringList> bundle(const QString &id) = 0;
};

struct Member
{
    qint64 id = 0;
    QString email;
    QByteArray sealedPassword;
    QString first, last, address, city, state, zip, country;
    QString createdOn;
    QString utmz;
};

class MemberStore
{
public:
    virtual ~MemberStore() = default;
    // Fails (nullopt, reason) when the e-mail address is taken.
    virtual std::optional<Member> addMember(const Member &member, QString *error) = 0;
    virtual std::optional<Member> memberById(qint64 id) = 0;
    // By the MD5 of the e-mail address as written, or of its lower-case form.
    virtual std::optional<Member> memberByEmailDigest(const QString &md5Hex) = 0;
    // By the MD5 of the decimal member id.
    virtual std::optional<Member> memberByIdDigest(const QString &md5Hex) = 0;
    // Replaces the profile fields (not the password); false with a reason when the new e-mail is taken.
    virtual bool updateProfile(const Member &member, QString *error) = 0;
    virtual bool setTokenDigest(qint64 memberId, const QString &tokenDigest) = 0;
    virtual QString tokenDigest(qint64 memberId) = 0;
};

struct WatchListEntry
{
    qint64 id = 0;
    QString appId;
    QString listName;
};

struct Purchase
{
    qint64 id = 0;
    QString appId;
    QString serialNumber;
    QString orderDate;
    QString purchasedVersion;
};

class ListStore
{
public:
    virtual ~ListStore() = default;
    virtual bool addToWatchList(qint64 memberId, const QString &appId, bool sendEmail) = 0;
    virtual bool removeFromWatchList(qint64 memberId, const QString &appId) = 0;
    virtual QList<WatchListEntry> watchList(qint64 memberId) = 0;
    virtual std::optional<Purchase> addPurchase(qint64 memberId, const Purchase &purchase,
                                                const QJsonObject &details) = 0;
    virtual QList<Purchase> purchases(qint64 memberId) = 0;
};

struct Report
{
    qint64 id = 0;
    QString kind; // "problem" or "badplist"
    QString receivedAt;
    qint64 memberId = -1;
    QJsonObject fields;
};

struct DownloadRecord
{
    QString appId, digest, login, installation, serial;
};

class ActivityStore
{
public:
    virtual ~ActivityStore() = default;
    virtual bool addReport(const Report &report) = 0;
    virtual QList<Report> reports() = 0;
    virtual bool addHit(const QJsonObject &fields) = 0;
    virtual QList<QJsonObject> hits() = 0;
    virtual bool addDownload(const DownloadRecord &download) = 0;
    virtual qint64 downloadCount(const QString &appId) = 0;
};

class LinkStore
{
public:
    virtual ~LinkStore() = default;
    // The same URL always gets the same number.
    virtual std::optional<qint64> shortLink(const QString &url) = 0;
    virtual std::optional<QString> target(qint64 number) = 0;
};

struct Storage
{
    std::unique_ptr<CatalogueStore> catalogue;
    std::unique_ptr<MemberStore> members;
    std::unique_ptr<ListStore> lists;
    std::unique_ptr<ActivityStore> activity;
    std::unique_ptr<LinkStore> links;
    std::unique_ptr<CrashStore> crashes;
};
