#pragma once

// Each storage area over a SqlDatabase, SQLite or PostgreSQL alike.

#include "storage/SqlDatabase.h"
#include "storage/Storage.h"

class SqlCatalogueStore : public CatalogueStore
{
public:
    explicit SqlCatalogueStore(std::shared_ptr<SqlDatabase> db) : m_db(std::move(db)) {}
    ImportSummary importCatalogue(const CatalogueImport &import) override;
    QList<StoredApp> apps() override;
    std::optional<StoredApp> app(const QString &id) override;
    qint64 revision() override;
    QStringList blacklist() override;
    bool addToBlacklist(const QString &name) override;
    bool removeFromBlacklist(const QString &name) override;
    std::optional<QStringList> bundle(const QString &id) override;

private:
    enum class Outcome { Added, Changed, Unchanged, Failed };
    Outcome importApp(const ImportApp &app, QString *error);
    bool bumpRevision();
    std::shared_ptr<SqlDatabase> m_db;
};

class SqlMemberStore : public MemberStore
{
public:
    explicit SqlMemberStore(std::shared_ptr<SqlDatabase> db) : m_db(std::move(db)) {}
    std::optional<Member> addMember(const Member &member, QString *error) override;
    std::optional<Member> memberById(qint64 id) override;
    std::optional<Member> memberByEmailDigest(const QString &md5Hex) override;
    std::optional<Member> memberByIdDigest(const QString &md5Hex) override;
    bool updateProfile(const Member &member, QString *error) override;
    bool setTokenDigest(qint64 memberId, const QString &tokenDigest) override;
    QString tokenDigest(qint64 memberId) override;

private:
    template <typename... Values> std::optional<Member> memberWhere(const char *condition, const Values &...values);
    std::shared_ptr<SqlDatabase> m_db;
};

class SqlListStore : public ListStore
{
public:
    explicit SqlListStore(std::shared_ptr<SqlDatabase> db) : m_db(std::move(db)) {}
    bool addToWatchList(qint64 memberId, const QString &appId, bool sendEmail) override;
    bool removeFromWatchList(qint64 memberId, const QString &appId) override;
    QList<WatchListEntry> watchList(qint64 memberId) override;
    std::optional<Purchase> addPurchase(qint64 memberId, const Purchase &purchase, const QJsonObject &details) override;
    QList<Purchase> purchases(qint64 memberId) override;

private:
    std::shared_ptr<SqlDatabase> m_db;
};

class SqlActivityStore : public ActivityStore
{
public:
    explicit SqlActivityStore(std::shared_ptr<SqlDatabase> db) : m_db(std::move(db)) {}
    bool addReport(const Report &report) override;
    QList<Report> reports() override;
    bool addHit(const QJsonObject &fields) override;
    QList<QJsonObject> hits() override;
    bool addDownload(const DownloadRecord &download) override;
    qint64 downloadCount(const QString &appId) override;

private:
    std::shared_ptr<SqlDatabase> m_db;
};

class SqlLinkStore : public LinkStore
{
public:
    explicit SqlLinkStore(std::shared_ptr<SqlDatabase> db) : m_db(std::move(db)) {}
    std::optional<qint64> shortLink(const QString &url) override;
    std::optional<QString> target(qint64 number) override;

private:
    std::shared_ptr<SqlDatabase> m_db;
};

class SqlCrashStore : public CrashStore
{
public:
    explicit SqlCrashStore(std::shared_ptr<SqlDatabase> db) : m_db(std::move(db)) {}
    bool addCrash(const CrashReport &crash) override;
    QList<CrashReport> crashes() override;

private:
    std::shared_ptr<SqlDatabase> m_db;
};
