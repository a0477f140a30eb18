#pragma once

// One SQLite connection shared by the threads of the service. Calls are serialised by the connection's own
// mutex (SQLITE_OPEN_FULLMUTEX) plus a lock held for the life of each statement and transaction, so a
// statement's steps never interleave with another thread's.

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <memory>
#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

class SqliteDatabase
{
public:
    ~SqliteDatabase();
    // Opens (creating when needed) the file and brings its schema up to date; null with a reason on failure.
    static std::unique_ptr<SqliteDatabase> open(const QString &path, QString *error);

    std::recursive_mutex &mutex() { return m_mutex; }
    sqlite3 *handle() const { return m_db; }
    QString lastError() const;
    qint64 lastInsertId() const;
    int changes() const;

private:
    explicit SqliteDatabase(sqlite3 *db) : m_db(db) {}
    bool applySchema(QString *error);

    sqlite3 *m_db = nullptr;
    std::recursive_mutex m_mutex;
};

// A prepared statement with bound parameters only; the database stays locked while it lives.
class SqlStatement
{
public:
    SqlStatement(SqliteDatabase &db, const char *sql);
    ~SqlStatement();
    SqlStatement(const SqlStatement &) = delete;
    SqlStatement &operator=(const SqlStatement &) = delete;

    SqlStatement &bind(int index, const QString &value);
    SqlStatement &bind(int index, qint64 value);
    SqlStatement &bind(int index, const QByteArray &blob);
    SqlStatement &bindNull(int index);

    // True while a row is available; false at the end or on an error (see ok()).
    bool next();
    // Runs a statement that returns no rows.
    bool exec();
    bool ok() const { return m_ok; }

    QString text(int column) const;
    qint64 integer(int column) const;
    QByteArray blob(int column) const;
    bool isNull(int column) const;

private:
    std::unique_lock<std::recursive_mutex> m_lock;
    SqliteDatabase &m_db;
    sqlite3_stmt *m_stmt = nullptr;
    bool m_ok = true;
};

// Commits on commit(); rolls back when it goes out of scope otherwise, so no path leaves half a change.
class SqlTransaction
{
public:
    explicit SqlTransaction(SqliteDatabase &db);
    ~SqlTransaction();
    bool isOpen() const { return m_open; }
    bool commit();

private:
    std::unique_lock<std::recursive_mutex> m_lock;
    SqliteDatabase &m_db;
    bool m_open = false;
};
