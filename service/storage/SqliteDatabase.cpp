#include "storage/SqliteDatabase.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <sqlite3.h>

namespace {

class SqliteCursor : public SqlCursor
{
public:
    SqliteCursor(std::recursive_mutex &mutex, sqlite3 *db) : m_lock(mutex), m_db(db) {}
    ~SqliteCursor() override { sqlite3_finalize(m_stmt); }

    bool prepare(const char *sql, const QList<SqlValue> &values)
    {
        if (sqlite3_prepare_v2(m_db, sql, -1, &m_stmt, nullptr) != SQLITE_OK)
            return fail("prepare");
        for (int i = 0; i < values.size(); ++i) {
            if (!bind(i + 1, values.at(i)))
                return fail("bind");
        }
        return true;
    }

    bool next() override
    {
        if (!m_ok)
            return false;
        const int rc = sqlite3_step(m_stmt);
        if (rc == SQLITE_ROW)
            return true;
        if (rc != SQLITE_DONE)
            return fail("step");
        m_changes = sqlite3_changes(m_db);
        return false;
    }
    bool ok() const override { return m_ok; }
    QString text(int column) const override
    {
        const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
        return data ? QString::fromUtf8(data, sqlite3_column_bytes(m_stmt, column)) : QString();
    }
    qint64 integer(int column) const override { return sqlite3_column_int64(m_stmt, column); }
    QByteArray blob(int column) const override
    {
        const auto *data = static_cast<const char *>(sqlite3_column_blob(m_stmt, column));
        return data ? QByteArray(data, sqlite3_column_bytes(m_stmt, column)) : QByteArray();
    }
    bool isNull(int column) const override { return sqlite3_column_type(m_stmt, column) == SQLITE_NULL; }
    int changes() const override { return m_changes; }

private:
    bool bind(int index, const SqlValue &value)
    {
        if (const auto *number = std::get_if<qint64>(&value))
            return sqlite3_bind_int64(m_stmt, index, *number) == SQLITE_OK;
        if (const auto *text = std::get_if<QString>(&value)) {
            const QByteArray utf8 = text->toUtf8();
            return sqlite3_bind_text(m_stmt, index, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT) == SQLITE_OK;
        }
        if (const auto *blob = std::get_if<QByteArray>(&value))
            return sqlite3_bind_blob(m_stmt, index, blob->constData(), int(blob->size()), SQLITE_TRANSIENT) ==
                   SQLITE_OK;
        return sqlite3_bind_null(m_stmt, index) == SQLITE_OK;
    }

    bool fail(const char *what)
    {
        const QString message = QString::fromUtf8(sqlite3_errmsg(m_db));
        qWarning().noquote() << "SQL" << what << "failed:" << message;
        SqlDatabase::noteError(message);
        m_ok = false;
        return false;
    }

    std::unique_lock<std::recursive_mutex> m_lock;
    sqlite3 *m_db;
    sqlite3_stmt *m_stmt = nullptr;
    bool m_ok = true;
    int m_changes = 0;
};

} // namespace

SqliteDatabase::~SqliteDatabase()
{
    sqlite3_close_v2(m_db);
}

std::unique_ptr<SqliteDatabase> SqliteDatabase::open(const QString &path, QString *error)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    sqlite3 *db = nullptr;
    const int rc = sqlite3_open_v2(QFile::encodeName(path).constData(), &db,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    std::unique_ptr<SqliteDatabase> database(new SqliteDatabase(db));
    if (rc != SQLITE_OK) {
        *error = QStringLiteral("cannot open %1: %2").arg(path, QString::fromUtf8(sqlite3_errmsg(db)));
        return nullptr;
    }
    // Another process (an import while the service runs) may hold the write lock for a moment.
    sqlite3_busy_timeout(db, 10000);
    for (const char *sql : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA foreign_keys=ON"}) {
        if (!database->execute(sql)) {
            *error = QStringLiteral("cannot open %1: %2").arg(path, lastError());
            return nullptr;
        }
    }
    return database;
}

std::unique_ptr<SqlCursor> SqliteDatabase::run(const char *sql, const QList<SqlValue> &values)
{
    auto cursor = std::make_unique<SqliteCursor>(m_mutex, m_db);
    cursor->prepare(sql, values);
    return cursor;
}

bool SqliteDatabase::execute(const char *sql)
{
    if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK)
        return true;
    noteError(QString::fromUtf8(sqlite3_errmsg(m_db)));
    qWarning().noquote() << "SQL" << sql << "failed:" << lastError();
    return false;
}

bool SqliteDatabase::begin()
{
    // The lock is held from here until commit or rollback. IMMEDIATE takes the write lock at once, so two
    // processes never deadlock upgrading a read lock.
    m_mutex.lock();
    if (execute("BEGIN IMMEDIATE"))
        return true;
    m_mutex.unlock();
    return false;
}

bool SqliteDatabase::commit()
{
    const bool committed = execute("COMMIT");
    if (!committed)
        execute("ROLLBACK");
    m_mutex.unlock();
    return committed;
}

void SqliteDatabase::rollback()
{
    execute("ROLLBACK");
    m_mutex.unlock();
}
