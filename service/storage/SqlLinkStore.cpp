#include "storage/SqlStores.h"

std::optional<qint64> SqlLinkStore::shortLink(const QString &url)
{
    // Two processes shortening the same link at once both end with the one row.
    SqlStatement insert(*m_db, "INSERT INTO short_links (url) VALUES (?) ON CONFLICT (url) DO NOTHING");
    if (!insert.bind(1, url).exec())
        return std::nullopt;
    SqlStatement select(*m_db, "SELECT id FROM short_links WHERE url = ?");
    if (!select.bind(1, url).next())
        return std::nullopt;
    return select.integer(0);
}

std::optional<QString> SqlLinkStore::target(qint64 number)
{
    SqlStatement select(*m_db, "SELECT url FROM short_links WHERE id = ?");
    if (!select.bind(1, number).next())
        return std::nullopt;
    return select.text(0);
}
