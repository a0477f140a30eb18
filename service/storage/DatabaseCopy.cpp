#include "storage/DatabaseCopy.h"

#include "storage/Schema.h"

namespace {

bool isEmpty(SqlDatabase &db, const Schema::Table &table)
{
    const QByteArray sql = QByteArray("SELECT COUNT(*) FROM ") + table.name;
    SqlStatement count(db, sql.constData());
    return count.next() && count.integer(0) == 0;
}

std::optional<qint64> copyTable(SqlDatabase &from, SqlDatabase &to, const Schema::Table &table)
{
    const int columns = int(qstrlen(table.kinds));
    QByteArray placeholders = "?";
    for (int i = 1; i < columns; ++i)
        placeholders += ", ?";
    const QByteArray select = QByteArray("SELECT ") + table.columns + " FROM " + table.name;
    // The target's own meta row (its schema version) is already there and the same.
    const QByteArray insert = QByteArray("INSERT INTO ") + table.name + " (" + table.columns + ") VALUES (" +
                              placeholders + ") ON CONFLICT DO NOTHING";
    SqlStatement rows(from, select.constData());
    qint64 copied = 0;
    while (rows.next()) {
        SqlStatement write(to, insert.constData());
        for (int i = 0; i < columns; ++i) {
            if (rows.isNull(i))
                write.bindNull(i + 1);
            else if (table.kinds[i] == 'i')
                write.bind(i + 1, rows.integer(i));
            else if (table.kinds[i] == 'b')
                write.bind(i + 1, rows.blob(i));
            else
                write.bind(i + 1, rows.text(i));
        }
        if (!write.exec())
            return std::nullopt;
        ++copied;
    }
    if (!rows.ok())
        return std::nullopt;
    return copied;
}

// Rows came with their ids, so a server's own numbering starts after the highest.
bool advanceIdentity(SqlDatabase &to, const Schema::Table &table)
{
    if (to.dialect() != SqlDialect::Postgres || !table.identity)
        return true;
    const QByteArray sql = QByteArray("SELECT setval(pg_get_serial_sequence('") + table.name + "', '" + table.identity +
                           "'), COALESCE(MAX(" + table.identity + "), 0) + 1, false) FROM " + table.name;
    return SqlStatement(to, sql.constData()).exec();
}

} // namespace

bool copyDatabase(SqlDatabase &from, SqlDatabase &to, QList<QPair<QString, qint64>> *counts, QString *error)
{
    for (const Schema::Table &table : Schema::tables()) {
        if (qstrcmp(table.name, "meta") != 0 && !isEmpty(to, table)) {
            *error = QStringLiteral("the target database already holds %1").arg(QLatin1StringView(table.name));
            return false;
        }
    }
    SqlTransaction transaction(to);
    if (!transaction.isOpen()) {
        *error = SqlDatabase::lastError();
        return false;
    }
    for (const Schema::Table &table : Schema::tables()) {
        const std::optional<qint64> copied = copyTable(from, to, table);
        if (!copied || !advanceIdentity(to, table)) {
            *error = QStringLiteral("%1: %2").arg(QLatin1StringView(table.name), SqlDatabase::lastError());
            return false;
        }
        counts->append({QString::fromLatin1(table.name), *copied});
    }
    if (!transaction.commit()) {
        *error = SqlDatabase::lastError();
        return false;
    }
    return true;
}
