#include "storage/OpenStorage.h"

#include "storage/PostgresDatabase.h"
#include "storage/SqlStores.h"
#include "storage/SqliteDatabase.h"

namespace {

// Statements are short and read their rows at once, so a few connections serve every worker of a process.
constexpr int postgresConnections = 4;

} // namespace

std::shared_ptr<SqlDatabase> openDatabase(const QString &location, std::chrono::seconds patience, QString *error)
{
    if (location.startsWith(QLatin1StringView("postgresql://")) ||
        location.startsWith(QLatin1StringView("postgres://")))
        return PostgresDatabase::open(location, postgresConnections, patience, error);
    const QLatin1StringView sqlitePrefix("sqlite:");
    return SqliteDatabase::open(location.startsWith(sqlitePrefix) ? location.mid(sqlitePrefix.size()) : location,
                                error);
}

std::unique_ptr<Storage> storageOver(const std::shared_ptr<SqlDatabase> &db)
{
    auto storage = std::make_unique<Storage>();
    storage->catalogue = std::make_unique<SqlCatalogueStore>(db);
    storage->members = std::make_unique<SqlMemberStore>(db);
    storage->lists = std::make_unique<SqlListStore>(db);
    storage->activity = std::make_unique<SqlActivityStore>(db);
    storage->links = std::make_unique<SqlLinkStore>(db);
    storage->crashes = std::make_unique<SqlCrashStore>(db);
    return storage;
}
