#include "storage/SqliteDatabase.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <sqlite3.h>

namespace {

// Plain SQL that PostgreSQL also accepts once INTEGER PRIMARY KEY becomes an identity column.
const char *const schema[] = {
    "CREATE TABLE IF NOT EXISTS meta (name TEXT PRIMARY KEY, value TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS apps (id INTEGER PRIMARY KEY, source_key TEXT NOT NULL UNIQUE, record TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS blacklist (position INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)",
    "CREATE TABLE IF NOT EXISTS bundles (id TEXT PRIMARY KEY, app_ids TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS members (id INTEGER PRIMARY KEY, email TEXT NOT NULL, email_folded TEXT NOT NULL "
    "UNIQUE,"
    " email_digest TEXT NOT NULL, email_folded_digest TEXT NOT NULL, id_digest TEXT NOT NULL,"
    " sealed_password BLOB NOT NULL, first_name TEXT NOT NULL, last_name TEXT NOT NULL, address TEXT NOT NULL,"
    " city TEXT NOT NULL, state TEXT NOT NULL, zip TEXT NOT NULL, country TEXT NOT NULL, created_on TEXT NOT NULL,"
    " utmz TEXT NOT NULL, token_digest TEXT NOT NULL)",
    "CREATE INDEX IF NOT EXISTS members_email_digest ON members (email_digest)",
    "CREATE INDEX IF NOT EXISTS members_email_folded_digest ON members (email_folded_digest)",
    "CREATE INDEX IF NOT EXISTS members_id_digest ON members (id_digest)",
    "CREATE TABLE IF NOT EXISTS watchlist (id INTEGER PRIMARY KEY, member_id INTEGER NOT NULL, app_id INTEGER NOT NULL,"
    " list_name TEXT NOT NULL, send_email INTEGER NOT NULL, added_at TEXT NOT NULL, UNIQUE (member_id, app_id))",
    "CREATE TABLE IF NOT EXISTS purchases (id INTEGER PRIMARY KEY, member_id INTEGER NOT NULL, app_id INTEGER NOT NULL,"
    " serial_number TEXT NOT NULL, order_date TEXT NOT NULL, purchased_version TEXT NOT NULL, details TEXT NOT NULL)",
    "CREATE INDEX IF NOT EXISTS purchases_member ON purchases (member_id)",
    "CREATE TABLE IF NOT EXISTS reports (id INTEGER PRIMARY KEY, kind TEXT NOT NULL, received_at TEXT NOT NULL,"
    " member_id INTEGER NOT NULL, fields TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS hits (id INTEGER PRIMARY KEY, received_at TEXT NOT NULL, fields TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS downloads (id INTEGER PRIMARY KEY, received_at TEXT NOT NULL, app_id INTEGER NOT NULL,"
    " digest TEXT NOT NULL, login TEXT NOT NULL, installation TEXT NOT NULL, serial TEXT NOT NULL)",
    "CREATE TABLE IF NOT EXISTS short_links (id INTEGER PRIMARY KEY, url TEXT NOT NULL UNIQUE)",
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
        *error = QStringLiteral("cannot open %1: %2").arg(path, database->lastError());
        return nullptr;
    }
    // Another process (an import while the service runs) may hold the write lock for a moment.
    sqlite3_busy_timeout(db, 10000);
    if (!database->applySchema(error))
        return nullptr;
    return database;
}

bool SqliteDatabase::applySchema(QString *error)
{
    for (const char *sql : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA foreign_keys=ON"}) {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            *error = lastError();
            return false;
        }
    }
    SqlTransaction transaction(*this);
    for (const char *sql : schema) {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            *error = QStringLiteral("schema: %1").arg(lastError());
            return false;
        }
    }
    return transaction.commit();
}

QString SqliteDatabase::lastError() const
{
    return QString::fromUtf8(sqlite3_errmsg(m_db));
}

qint64 SqliteDatabase::lastInsertId() const
{
    return sqlite3_last_insert_rowid(m_db);
}

int SqliteDatabase::changes() const
{
    return sqlite3_changes(m_db);
}

SqlStatement::SqlStatement(SqliteDatabase &db, const char *sql) : m_lock(db.mutex()), m_db(db)
{
    if (sqlite3_prepare_v2(db.handle(), sql, -1, &m_stmt, nullptr) != SQLITE_OK) {
        qWarning().noquote() << "SQL prepare failed:" << db.lastError();
        m_ok = false;
    }
}

SqlStatement::~SqlStatement()
{
    sqlite3_finalize(m_stmt);
}

SqlStatement &SqlStatement::bind(int index, const QString &value)
{
    const QByteArray utf8 = value.toUtf8();
    if (m_ok && sqlite3_bind_text(m_stmt, index, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT) != SQLITE_OK)
        m_ok = false;
    return *this;
}

SqlStatement &SqlStatement::bind(int index, qint64 value)
{
    if (m_ok && sqlite3_bind_int64(m_stmt, index, value) != SQLITE_OK)
        m_ok = false;
    return *this;
}

SqlStatement &SqlStatement::bind(int index, const QByteArray &blob)
{
    if (m_ok && sqlite3_bind_blob(m_stmt, index, blob.constData(), int(blob.size()), SQLITE_TRANSIENT) != SQLITE_OK)
        m_ok = false;
    return *this;
}

SqlStatement &SqlStatement::bindNull(int index)
{
    if (m_ok && sqlite3_bind_null(m_stmt, index) != SQLITE_OK)
        m_ok = false;
    return *this;
}

bool SqlStatement::next()
{
    if (!m_ok)
        return false;
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW)
        return true;
    if (rc != SQLITE_DONE) {
        qWarning().noquote() << "SQL step failed:" << m_db.lastError();
        m_ok = false;
    }
    return false;
}

bool SqlStatement::exec()
{
    while (next()) {
    }
    return m_ok;
}

QString SqlStatement::text(int column) const
{
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
    return data ? QString::fromUtf8(data, sqlite3_column_bytes(m_stmt, column)) : QString();
}

qint64 SqlStatement::integer(int column) const
{
    return sqlite3_column_int64(m_stmt, column);
}

QByteArray SqlStatement::blob(int column) const
{
    const auto *data = static_cast<const char *>(sqlite3_column_blob(m_stmt, column));
    return data ? QByteArray(data, sqlite3_column_bytes(m_stmt, column)) : QByteArray();
}

bool SqlStatement::isNull(int column) const
{
    return sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

SqlTransaction::SqlTransaction(SqliteDatabase &db) : m_lock(db.mutex()), m_db(db)
{
    // IMMEDIATE takes the write lock at once, so two processes never deadlock upgrading a read lock.
    m_open = sqlite3_exec(db.handle(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK;
    if (!m_open)
        qWarning().noquote() << "SQL begin failed:" << db.lastError();
}

SqlTransaction::~SqlTransaction()
{
    if (m_open)
        sqlite3_exec(m_db.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

bool SqlTransaction::commit()
{
    if (!m_open)
        return false;
    m_open = false;
    if (sqlite3_exec(m_db.handle(), "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK)
        return true;
    qWarning().noquote() << "SQL commit failed:" << m_db.lastError();
    sqlite3_exec(m_db.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    return false;
}
