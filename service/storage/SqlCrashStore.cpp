#include "storage/SqlStores.h"

#include <QDateTime>

bool SqlCrashStore::addCrash(const CrashReport &crash)
{
    SqlStatement insert(*m_db, "INSERT INTO crashes (received_at, version, installation, details, report)"
                               " VALUES (?, ?, ?, ?, ?)");
    insert.bind(1, QDateTime::currentDateTimeUtc().toString(Qt::ISODate)).bind(2, crash.version);
    return insert.bind(3, crash.installation).bind(4, crash.details).bind(5, crash.report).exec();
}

QList<CrashReport> SqlCrashStore::crashes()
{
    QList<CrashReport> result;
    SqlStatement select(*m_db,
                        "SELECT id, received_at, version, installation, details, report FROM crashes ORDER BY id");
    while (select.next())
        result.append(
            {select.integer(0), select.text(1), select.text(2), select.text(3), select.text(4), select.blob(5)});
    return result;
}
