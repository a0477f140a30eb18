#pragma once

// A PostgreSQL server shared by any number of service processes. Each process keeps a small pool of
// connections; a statement borrows one for as long as it runs (its rows are read at once), a transaction for
// its whole life. A connection the server dropped (a restart) is made again the next time it is borrowed, so the
// service comes back by itself; meanwhile statements fail and note a StorageFault.

#include "storage/SqlDatabase.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

class PostgresDatabase : public SqlDatabase
{
public:
    ~PostgresDatabase() override;
    // Connects once, trying again for up to patience while the server cannot be reached; null with a reason
    // that names the server when it never answers.
    static std::unique_ptr<PostgresDatabase> open(const QString &uri, int poolSize, std::chrono::seconds patience,
                                                  QString *error);

    SqlDialect dialect() const override { return SqlDialect::Postgres; }
    std::unique_ptr<SqlCursor> run(const char *sql, const QList<SqlValue> &values) override;
    bool begin() override;
    bool commit() override;
    void rollback() override;

    struct Connection;

private:
    PostgresDatabase(QByteArray uri, int poolSize);
    Connection *acquire();
    void release(Connection *connection);
    bool finishTransaction(const char *command);

    const QByteArray m_uri;
    const int m_poolSize;
    std::mutex m_mutex;
    std::condition_variable m_released;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::vector<Connection *> m_idle;
};
