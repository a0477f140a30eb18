#include "storage/SqliteStores.h"

std::optional<qint64> SqliteLinkStore::shortLink(const QString &url)
{
    SqlTransaction transaction(*m_db);
    if (!transaction.isOpen())
        return std::nullopt;
    {
        SqlStatement select(*m_db, "SELECT id FROM short_links WHERE url = ?");
        if (select.bind(1, url).next())
            return select.integer(0);
    }
    SqlStatement insert(*m_db, "INSERT INTO short_links (url) VALUES (?)");
    if (!insert.bind(1, url).exec())
        return std::nullopt;
    const qint64 id = m_db->lastInsertId();
    if (!transaction.commit())
        return std::nullopt;
    return id;
}

std::optional<QString> SqliteLinkStore::target(qint64 number)
{
    SqlStatement select(*m_db, "SELECT url FROM short_links WHERE id = ?");
    if (!select.bind(1, number).next())
        return std::nullopt;
    return select.text(0);
}
