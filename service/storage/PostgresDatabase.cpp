#include "storage/PostgresDatabase.h"

#include <QDebug>

#include <cstdio>
#include <libpq-fe.h>
#include <string>
#include <thread>
#include <unordered_map>

namespace {

constexpr Oid byteaType = 17;

// "?" placeholders become "$1", "$2"...; quoted text is left alone.
QByteArray numberedPlaceholders(const char *sql)
{
    QByteArray out;
    int count = 0;
    bool quoted = false;
    for (const char *c = sql; *c; ++c) {
        if (*c == '\'')
            quoted = !quoted;
        if (*c == '?' && !quoted)
            out += '$' + QByteArray::number(++count);
        else
            out += *c;
    }
    return out;
}

QString serverName(PGconn *conn)
{
    return QStringLiteral("%1:%2/%3")
        .arg(QString::fromUtf8(PQhost(conn)), QString::fromUtf8(PQport(conn)), QString::fromUtf8(PQdb(conn)));
}

QString connectionError(PGconn *conn)
{
    return QString::fromUtf8(PQerrorMessage(conn)).trimmed();
}

class PostgresCursor : public SqlCursor
{
public:
    explicit PostgresCursor(PGresult *result) : m_result(result)
    {
        const ExecStatusType status = PQresultStatus(result);
        m_ok = status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK;
        m_rows = m_ok ? PQntuples(result) : 0;
    }
    ~PostgresCursor() override { PQclear(m_result); }

    bool next() override { return ++m_row < m_rows; }
    bool ok() const override { return m_ok; }
    QString text(int column) const override
    {
        return QString::fromUtf8(PQgetvalue(m_result, m_row, column), PQgetlength(m_result, m_row, column));
    }
    qint64 integer(int column) const override
    {
        return QByteArray::fromRawData(PQgetvalue(m_result, m_row, column), PQgetlength(m_result, m_row, column))
            .toLongLong();
    }
    QByteArray blob(int column) const override
    {
        size_t length = 0;
        unsigned char *bytes =
            PQunescapeBytea(reinterpret_cast<const unsigned char *>(PQgetvalue(m_result, m_row, column)), &length);
        const QByteArray blob(reinterpret_cast<const char *>(bytes), qsizetype(length));
        PQfreemem(bytes);
        return blob;
    }
    bool isNull(int column) const override { return PQgetisnull(m_result, m_row, column); }
    int changes() const override { return std::atoi(PQcmdTuples(m_result)); }

private:
    PGresult *m_result;
    bool m_ok = false;
    int m_rows = 0;
    int m_row = -1;
};

} // namespace

struct PostgresDatabase::Connection
{
    PGconn *conn = nullptr;
    // The statements prepared on this connection, by their SQL; a new connection starts without any.
    std::unordered_map<std::string, std::string> prepared;

    ~Connection() { PQfinish(conn); }

    // Connects when it never has, or again when the server dropped it.
    bool ready(const QByteArray &uri)
    {
        if (conn && PQstatus(conn) == CONNECTION_OK)
            return true;
        prepared.clear();
        if (conn) {
            PQreset(conn);
        } else {
            // A server that does not answer at all is given up on after a few seconds; the URI may say otherwise.
            const char *keys[] = {"connect_timeout", "application_name", "dbname", nullptr};
            const char *values[] = {"5", "velmora-service", uri.constData(), nullptr};
            conn = PQconnectdbParams(keys, values, 1);
            PQsetNoticeProcessor(
                conn, [](void *, const char *) {}, nullptr);
        }
        if (PQstatus(conn) == CONNECTION_OK)
            return true;
        SqlDatabase::noteError(
            QStringLiteral("cannot reach the database at %1: %2").arg(serverName(conn), connectionError(conn)));
        StorageFault::note();
        return false;
    }

    // Inside a transaction a dropped connection is not made again: the transaction is gone with it.
    std::unique_ptr<SqlCursor> execute(const QByteArray &uri, const char *sql, const QList<SqlValue> &values,
                                       bool inTransaction = false)
    {
        if (inTransaction ? PQstatus(conn) != CONNECTION_OK : !ready(uri))
            return failed(nullptr);
        auto found = prepared.find(sql);
        if (found == prepared.end()) {
            std::vector<Oid> types;
            for (const SqlValue &value : values)
                types.push_back(std::holds_alternative<QByteArray>(value) ? byteaType : 0);
            const std::string name = "s" + std::to_string(prepared.size());
            PGresult *result =
                PQprepare(conn, name.c_str(), numberedPlaceholders(sql).constData(), int(types.size()), types.data());
            const bool preparedOk = PQresultStatus(result) == PGRES_COMMAND_OK;
            if (!preparedOk)
                return failed(result);
            PQclear(result);
            found = prepared.emplace(sql, name).first;
        }
        std::vector<QByteArray> texts(size_t(values.size()));
        std::vector<const char *> pointers(size_t(values.size()), nullptr);
        std::vector<int> lengths(size_t(values.size()), 0), formats(size_t(values.size()), 0);
        for (int i = 0; i < values.size(); ++i) {
            const SqlValue &value = values.at(i);
            if (const auto *number = std::get_if<qint64>(&value))
                texts[size_t(i)] = QByteArray::number(*number);
            else if (const auto *text = std::get_if<QString>(&value))
                texts[size_t(i)] = text->toUtf8();
            else if (const auto *blob = std::get_if<QByteArray>(&value))
                texts[size_t(i)] = *blob, formats[size_t(i)] = 1;
            else
                continue;
            pointers[size_t(i)] = texts[size_t(i)].constData();
            lengths[size_t(i)] = int(texts[size_t(i)].size());
        }
        PGresult *result = PQexecPrepared(conn, found->second.c_str(), int(values.size()), pointers.data(),
                                          lengths.data(), formats.data(), 0);
        auto cursor = std::make_unique<PostgresCursor>(result);
        return cursor->ok() ? std::move(cursor) : failed(result, std::move(cursor));
    }

    // Notes why; a connection the server dropped is a fault of the whole request.
    std::unique_ptr<SqlCursor> failed(PGresult *result, std::unique_ptr<PostgresCursor> cursor = nullptr)
    {
        if (result) {
            const QString message = QString::fromUtf8(PQresultErrorMessage(result)).trimmed();
            SqlDatabase::noteError(message.isEmpty() ? connectionError(conn) : message);
            qWarning().noquote() << "SQL failed:" << SqlDatabase::lastError();
        }
        if (!conn || PQstatus(conn) != CONNECTION_OK)
            StorageFault::note();
        if (!cursor)
            cursor = std::make_unique<PostgresCursor>(result ? result : PQmakeEmptyPGresult(conn, PGRES_FATAL_ERROR));
        return cursor;
    }
};

namespace {

// The connection a transaction holds, for the statements its thread runs until it ends.
thread_local struct
{
    PostgresDatabase *db = nullptr;
    PostgresDatabase::Connection *connection = nullptr;
} pinned;

} // namespace

PostgresDatabase::PostgresDatabase(QByteArray uri, int poolSize) : m_uri(std::move(uri)), m_poolSize(poolSize) {}

PostgresDatabase::~PostgresDatabase() = default;

std::unique_ptr<PostgresDatabase> PostgresDatabase::open(const QString &uri, int poolSize,
                                                         std::chrono::seconds patience, QString *error)
{
    std::unique_ptr<PostgresDatabase> db(new PostgresDatabase(uri.toUtf8(), std::max(1, poolSize)));
    auto first = std::make_unique<Connection>();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    bool told = false;
    while (!first->ready(db->m_uri)) {
        if (std::chrono::steady_clock::now() >= deadline) {
            *error = lastError();
            return nullptr;
        }
        if (!told) {
            std::fprintf(stderr, "%s; trying again for up to %llds\n", qUtf8Printable(lastError()),
                         static_cast<long long>(patience.count()));
            told = true;
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    StorageFault::clear();
    db->m_idle.push_back(first.get());
    db->m_connections.push_back(std::move(first));
    return db;
}

PostgresDatabase::Connection *PostgresDatabase::acquire()
{
    std::unique_lock lock(m_mutex);
    if (m_idle.empty() && int(m_connections.size()) < m_poolSize) {
        m_connections.push_back(std::make_unique<Connection>());
        return m_connections.back().get();
    }
    m_released.wait(lock, [this] { return !m_idle.empty(); });
    Connection *connection = m_idle.back();
    m_idle.pop_back();
    return connection;
}

void PostgresDatabase::release(Connection *connection)
{
    {
        std::lock_guard lock(m_mutex);
        m_idle.push_back(connection);
    }
    m_released.notify_one();
}

std::unique_ptr<SqlCursor> PostgresDatabase::run(const char *sql, const QList<SqlValue> &values)
{
    if (pinned.db == this)
        return pinned.connection->execute(m_uri, sql, values, true);
    Connection *connection = acquire();
    auto cursor = connection->execute(m_uri, sql, values);
    release(connection);
    return cursor;
}

bool PostgresDatabase::begin()
{
    Connection *connection = acquire();
    if (connection->ready(m_uri)) {
        PGresult *result = PQexec(connection->conn, "BEGIN");
        if (PQresultStatus(result) == PGRES_COMMAND_OK) {
            PQclear(result);
            pinned = {this, connection};
            return true;
        }
        connection->failed(result);
    }
    release(connection);
    return false;
}

bool PostgresDatabase::finishTransaction(const char *command)
{
    Connection *connection = pinned.connection;
    pinned = {};
    PGresult *result = PQexec(connection->conn, command);
    // A transaction that failed part-way answers COMMIT with ROLLBACK.
    const bool done = PQresultStatus(result) == PGRES_COMMAND_OK && qstrcmp(PQcmdStatus(result), command) == 0;
    if (!done)
        connection->failed(result);
    else
        PQclear(result);
    release(connection);
    return done;
}

bool PostgresDatabase::commit()
{
    return finishTransaction("COMMIT");
}

void PostgresDatabase::rollback()
{
    finishTransaction("ROLLBACK");
}
