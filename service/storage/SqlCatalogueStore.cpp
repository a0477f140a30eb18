#include "storage/JsonColumn.h"
#include "storage/SqlStores.h"

namespace {

// Ids the service gives start here, above the hand-picked ids of small catalogues.
constexpr qint64 firstAssignedId = 100000;

} // namespace

ImportSummary SqlCatalogueStore::importCatalogue(const CatalogueImport &import)
{
    ImportSummary summary;
    SqlTransaction transaction(*m_db);
    if (!transaction.isOpen()) {
        summary.error = m_db->lastError();
        return summary;
    }
    for (const ImportApp &app : import.apps) {
        switch (importApp(app, &summary.error)) {
        case Outcome::Added:
            ++summary.added;
            break;
        case Outcome::Changed:
            ++summary.changed;
            break;
        case Outcome::Unchanged:
            ++summary.unchanged;
            break;
        case Outcome::Failed:
            return {0, 0, 0, summary.error};
        }
    }
    bool changed = summary.added + summary.changed > 0;
    for (const QString &name : import.blacklist) {
        SqlStatement insert(*m_db, "INSERT INTO blacklist (name) VALUES (?) ON CONFLICT DO NOTHING");
        if (!insert.bind(1, name).exec())
            return {0, 0, 0, m_db->lastError()};
        changed = changed || insert.changes() > 0;
    }
    for (const auto &[bundleId, appIds] : import.bundles) {
        for (const QString &appId : appIds) {
            if (!app(appId))
                return {0, 0, 0, QStringLiteral("bundle %1 names unknown catalogue id %2").arg(bundleId, appId)};
        }
        SqlStatement upsert(*m_db, "INSERT INTO bundles (id, app_ids) VALUES (?, ?)"
                                   " ON CONFLICT (id) DO UPDATE SET app_ids = excluded.app_ids");
        if (!upsert.bind(1, bundleId).bind(2, appIds.join(u',')).exec())
            return {0, 0, 0, m_db->lastError()};
    }
    if (changed && !bumpRevision())
        return {0, 0, 0, m_db->lastError()};
    if (!transaction.commit())
        return {0, 0, 0, m_db->lastError()};
    return summary;
}

SqlCatalogueStore::Outcome SqlCatalogueStore::importApp(const ImportApp &app, QString *error)
{
    const QString text = JsonColumn::text(app.record);
    std::optional<qint64> keyOwner;
    {
        SqlStatement byKey(*m_db, "SELECT id FROM apps WHERE source_key = ?");
        if (byKey.bind(1, app.sourceKey).next())
            keyOwner = byKey.integer(0);
    }
    qint64 id = 0;
    if (!app.id.isEmpty()) {
        id = app.id.toLongLong();
        if (keyOwner && *keyOwner != id) {
            *error = QStringLiteral("key %1 already belongs to catalogue id %2")
                         .arg(app.sourceKey, QString::number(*keyOwner));
            return Outcome::Failed;
        }
    } else if (keyOwner) {
        id = *keyOwner;
    } else {
        SqlStatement maxId(*m_db, "SELECT MAX(id) FROM apps");
        id = maxId.next() && !maxId.isNull(0) ? std::max(maxId.integer(0) + 1, firstAssignedId) : firstAssignedId;
    }

    std::optional<std::pair<QString, QString>> existing;
    {
        SqlStatement byId(*m_db, "SELECT source_key, record FROM apps WHERE id = ?");
        if (byId.bind(1, id).next())
            existing = std::make_pair(byId.text(0), byId.text(1));
    }
    if (existing && existing->first == app.sourceKey && existing->second == text)
        return Outcome::Unchanged;
    SqlStatement write(*m_db, existing ? "UPDATE apps SET source_key = ?, record = ? WHERE id = ?"
                                       : "INSERT INTO apps (source_key, record, id) VALUES (?, ?, ?)");
    if (!write.bind(1, app.sourceKey).bind(2, text).bind(3, id).exec()) {
        *error = QStringLiteral("catalogue id %1: %2").arg(QString::number(id), m_db->lastError());
        return Outcome::Failed;
    }
    return existing ? Outcome::Changed : Outcome::Added;
}

bool SqlCatalogueStore::bumpRevision()
{
    SqlStatement bump(*m_db, "INSERT INTO meta (name, value) VALUES ('catalogue_revision', '1')"
                             " ON CONFLICT (name) DO UPDATE SET value = CAST(CAST(meta.value AS INTEGER) + 1 AS TEXT)");
    return bump.exec();
}

QList<StoredApp> SqlCatalogueStore::apps()
{
    QList<StoredApp> result;
    SqlStatement select(*m_db, "SELECT id, source_key, record FROM apps ORDER BY id");
    while (select.next())
        result.append({QString::number(select.integer(0)), select.text(1), JsonColumn::object(select.text(2))});
    return result;
}

std::optional<StoredApp> SqlCatalogueStore::app(const QString &id)
{
    bool numeric = false;
    const qint64 number = id.toLongLong(&numeric);
    if (!numeric)
        return std::nullopt;
    SqlStatement select(*m_db, "SELECT id, source_key, record FROM apps WHERE id = ?");
    if (!select.bind(1, number).next())
        return std::nullopt;
    return StoredApp{QString::number(select.integer(0)), select.text(1), JsonColumn::object(select.text(2))};
}

qint64 SqlCatalogueStore::revision()
{
    SqlStatement select(*m_db, "SELECT value FROM meta WHERE name = 'catalogue_revision'");
    return select.next() ? select.text(0).toLongLong() : 0;
}

QStringList SqlCatalogueStore::blacklist()
{
    QStringList names;
    SqlStatement select(*m_db, "SELECT name FROM blacklist ORDER BY position");
    while (select.next())
        names.append(select.text(0));
    return names;
}

bool SqlCatalogueStore::addToBlacklist(const QString &name)
{
    SqlStatement insert(*m_db, "INSERT INTO blacklist (name) VALUES (?) ON CONFLICT DO NOTHING");
    return insert.bind(1, name).exec();
}

bool SqlCatalogueStore::removeFromBlacklist(const QString &name)
{
    SqlStatement remove(*m_db, "DELETE FROM blacklist WHERE name = ?");
    return remove.bind(1, name).exec() && remove.changes() > 0;
}

std::optional<QStringList> SqlCatalogueStore::bundle(const QString &id)
{
    SqlStatement select(*m_db, "SELECT app_ids FROM bundles WHERE id = ?");
    if (!select.bind(1, id).next())
        return std::nullopt;
    return select.text(0).split(u',', Qt::SkipEmptyParts);
}
