#include "storage/JsonColumn.h"
#include "storage/SqlStores.h"

#include <QDateTime>

bool SqlListStore::addToWatchList(qint64 memberId, const QString &appId, bool sendEmail)
{
    // Adding an app twice keeps its first entry (and its entry id) and takes the newer e-mail choice.
    SqlStatement upsert(*m_db, "INSERT INTO watchlist (member_id, app_id, list_name, send_email, added_at)"
                               " VALUES (?, ?, 'All', ?, ?)"
                               " ON CONFLICT (member_id, app_id) DO UPDATE SET send_email = excluded.send_email");
    upsert.bind(1, memberId).bind(2, appId.toLongLong()).bind(3, qint64(sendEmail ? 1 : 0));
    return upsert.bind(4, QDateTime::currentDateTimeUtc().toString(Qt::ISODate)).exec();
}

bool SqlListStore::removeFromWatchList(qint64 memberId, const QString &appId)
{
    SqlStatement remove(*m_db, "DELETE FROM watchlist WHERE member_id = ? AND app_id = ?");
    return remove.bind(1, memberId).bind(2, appId.toLongLong()).exec() && remove.changes() > 0;
}

QList<WatchListEntry> SqlListStore::watchList(qint64 memberId)
{
    QList<WatchListEntry> entries;
    SqlStatement select(*m_db, "SELECT id, app_id, list_name FROM watchlist WHERE member_id = ? ORDER BY id");
    select.bind(1, memberId);
    while (select.next())
        entries.append({select.integer(0), QString::number(select.integer(1)), select.text(2)});
    return entries;
}

std::optional<Purchase> SqlListStore::addPurchase(qint64 memberId, const Purchase &purchase, const QJsonObject &details)
{
    SqlStatement insert(*m_db, "INSERT INTO purchases (member_id, app_id, serial_number, order_date,"
                               " purchased_version, details) VALUES (?, ?, ?, ?, ?, ?) RETURNING id");
    insert.bind(1, memberId).bind(2, purchase.appId.toLongLong()).bind(3, purchase.serialNumber);
    insert.bind(4, purchase.orderDate).bind(5, purchase.purchasedVersion);
    insert.bind(6, JsonColumn::text(details));
    const std::optional<qint64> id = insert.insertedId();
    if (!id)
        return std::nullopt;
    Purchase added = purchase;
    added.id = *id;
    return added;
}

QList<Purchase> SqlListStore::purchases(qint64 memberId)
{
    QList<Purchase> result;
    SqlStatement select(*m_db, "SELECT id, app_id, serial_number, order_date, purchased_version FROM purchases"
                               " WHERE member_id = ? ORDER BY id");
    select.bind(1, memberId);
    while (select.next()) {
        result.append(
            {select.integer(0), QString::number(select.integer(1)), select.text(2), select.text(3), select.text(4)});
    }
    return result;
}
