#pragma once

// One SQLite connection shared by the threads of the service. Calls are serialised by the connection's own
// mutex (SQLITE_OPEN_FULLMUTEX) plus a lock held for the life of each statement and transaction, so a
// statement's steps never interleave with another thread's.

#include "storage/SqlDatabase.h"

#include <mutex>

struct sqlite3;

class SqliteDatabase : public SqlDatabase
{
public:
    ~SqliteDatabase() override;
    // Opens (creating when needed) the file; null with a reason on failure.
    static std::unique_ptr<SqliteDatabase> open(const QString &path, QString *error);

    SqlDialect dialect() const override { return SqlDialect::Sqlite; }
    std::unique_ptr<SqlCursor> run(const char *sql, const QList<SqlValue> &values) override;
    bool begin() override;
    bool commit() override;
    void rollback() override;

private:
    explicit SqliteDatabase(sqlite3 *db) : m_db(db) {}
    bool execute(const char *sql);

    sqlite3 *m_db = nullptr;
    std::recursive_mutex m_mutex;
};
