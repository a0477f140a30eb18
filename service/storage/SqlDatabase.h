#pragma once

// The database the stores talk to, whichever it is. The stores write one portable SQL ("?" placeholders,
// ON CONFLICT upserts, RETURNING for new ids); each back end runs it as prepared statements and keeps its own
// connections, locks and transactions.

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>
#include <variant>

using SqlValue = std::variant<std::nullptr_t, qint64, QString, QByteArray>;

enum class SqlDialect { Sqlite, Postgres };

// One statement's rows, already running. It holds whatever the back end needs until it is destroyed.
class SqlCursor
{
public:
    virtual ~SqlCursor() = default;
    // True while a row is available; false at the end or on an error (see ok()).
    virtual bool next() = 0;
    virtual bool ok() const = 0;
    virtual QString text(int column) const = 0;
    virtual qint64 integer(int column) const = 0;
    virtual QByteArray blob(int column) const = 0;
    virtual bool isNull(int column) const = 0;
    // Rows changed by an INSERT, UPDATE or DELETE.
    virtual int changes() const = 0;
};

class SqlDatabase
{
public:
    virtual ~SqlDatabase() = default;
    virtual SqlDialect dialect() const = 0;
    // Runs sql with its "?" placeholders bound to values, in this thread's open transaction if there is one.
    virtual std::unique_ptr<SqlCursor> run(const char *sql, const QList<SqlValue> &values) = 0;
    // A transaction belongs to the thread that began it, until it commits or rolls back.
    virtual bool begin() = 0;
    virtual bool commit() = 0;
    virtual void rollback() = 0;

    // The last failure in this thread, for messages; back ends record it with noteError.
    static QString lastError();
    static void noteError(const QString &message);
};

// The database could not be reached during this thread's request: the answer is 503, whatever the handler
// made of the empty results. Cleared before each request.
namespace StorageFault {
void clear();
void note();
bool occurred();
} // namespace StorageFault

// A statement with bound parameters only; it runs at the first next() or exec().
class SqlStatement
{
public:
    SqlStatement(SqlDatabase &db, const char *sql) : m_db(db), m_sql(sql) {}
    SqlStatement(const SqlStatement &) = delete;
    SqlStatement &operator=(const SqlStatement &) = delete;

    SqlStatement &bind(int index, const QString &value) { return set(index, value); }
    SqlStatement &bind(int index, qint64 value) { return set(index, value); }
    SqlStatement &bind(int index, const QByteArray &blob) { return set(index, blob); }
    SqlStatement &bindNull(int index) { return set(index, nullptr); }

    bool next();
    // Runs a statement that returns no rows (or ignores them).
    bool exec();
    // Runs an INSERT ... RETURNING id to its end; the new row's id.
    std::optional<qint64> insertedId();
    bool ok() const { return !m_cursor || m_cursor->ok(); }
    int changes() const { return m_cursor ? m_cursor->changes() : 0; }

    QString text(int column) const { return m_cursor->text(column); }
    qint64 integer(int column) const { return m_cursor->integer(column); }
    QByteArray blob(int column) const { return m_cursor->blob(column); }
    bool isNull(int column) const { return m_cursor->isNull(column); }

private:
    SqlStatement &set(int index, SqlValue value);

    SqlDatabase &m_db;
    const char *m_sql;
    QList<SqlValue> m_values;
    std::unique_ptr<SqlCursor> m_cursor;
};

// Commits on commit(); rolls back when it goes out of scope otherwise, so no path leaves half a change.
class SqlTransaction
{
public:
    explicit SqlTransaction(SqlDatabase &db) : m_db(db), m_open(db.begin()) {}
    ~SqlTransaction();
    SqlTransaction(const SqlTransaction &) = delete;
    SqlTransaction &operator=(const SqlTransaction &) = delete;
    bool isOpen() const { return m_open; }
    bool commit();

private:
    SqlDatabase &m_db;
    bool m_open;
};
