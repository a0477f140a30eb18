#include "storage/JsonColumn.h"
#include "storage/SqlStores.h"

#include <QDateTime>

namespace {

QString now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

} // namespace

bool SqlActivityStore::addReport(const Report &report)
{
    SqlStatement insert(*m_db, "INSERT INTO reports (kind, received_at, member_id, fields) VALUES (?, ?, ?, ?)");
    return insert.bind(1, report.kind)
        .bind(2, now())
        .bind(3, report.memberId)
        .bind(4, JsonColumn::text(report.fields))
        .exec();
}

QList<Report> SqlActivityStore::reports()
{
    QList<Report> result;
    SqlStatement select(*m_db, "SELECT id, kind, received_at, member_id, fields FROM reports ORDER BY id");
    while (select.next())
        result.append(
            {select.integer(0), select.text(1), select.text(2), select.integer(3), JsonColumn::object(select.text(4))});
    return result;
}

bool SqlActivityStore::addHit(const QJsonObject &fields)
{
    SqlStatement insert(*m_db, "INSERT INTO hits (received_at, fields) VALUES (?, ?)");
    return insert.bind(1, now()).bind(2, JsonColumn::text(fields)).exec();
}

QList<QJsonObject> SqlActivityStore::hits()
{
    QList<QJsonObject> result;
    SqlStatement select(*m_db, "SELECT received_at, fields FROM hits ORDER BY id");
    while (select.next()) {
        QJsonObject hit = JsonColumn::object(select.text(1));
        hit.insert(QStringLiteral("received_at"), select.text(0));
        result.append(hit);
    }
    return result;
}

bool SqlActivityStore::addDownload(const DownloadRecord &download)
{
    SqlStatement insert(*m_db, "INSERT INTO downloads (received_at, app_id, digest, login, installation, serial)"
                               " VALUES (?, ?, ?, ?, ?, ?)");
    insert.bind(1, now()).bind(2, download.appId.toLongLong()).bind(3, download.digest).bind(4, download.login);
    return insert.bind(5, download.installation).bind(6, download.serial).exec();
}

qint64 SqlActivityStore::downloadCount(const QString &appId)
{
    SqlStatement select(*m_db, "SELECT COUNT(*) FROM downloads WHERE app_id = ?");
    return select.bind(1, appId.toLongLong()).next() ? select.integer(0) : 0;
}
