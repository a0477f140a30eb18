#include "storage/SqliteStores.h"

std::unique_ptr<Storage> openSqliteStorage(const QString &path, QString *error)
{
    std::shared_ptr<SqliteDatabase> db = SqliteDatabase::open(path, error);
    if (!db)
        return nullptr;
    auto storage = std::make_unique<Storage>();
    storage->catalogue = std::make_unique<SqliteCatalogueStore>(db);
    storage->members = std::make_unique<SqliteMemberStore>(db);
    storage->lists = std::make_unique<SqliteListStore>(db);
    storage->activity = std::make_unique<SqliteActivityStore>(db);
    storage->links = std::make_unique<SqliteLinkStore>(db);
    return storage;
}
