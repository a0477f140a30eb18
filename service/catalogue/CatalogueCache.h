#pragma once

// Keeps the in-memory catalogue in step with the store: rebuilt whenever an import (in this process or
// another) has moved the store's revision. Files that this service serves get their hash and size here.
//
// The revision is asked for at most once in revisionReuse, not for every request: on a database server that round
// trip was a tenth of a matching request. An import waits as long after its commit before it reports
// (CatalogueFile::importFile), so every request that starts after an import has reported sees it, in any process.

#include "catalogue/CatalogueIndex.h"

#include <QDateTime>

#include <chrono>
#include <mutex>

class CatalogueCache
{
public:
    CatalogueCache(CatalogueStore &store, QString filesDir);
    std::shared_ptr<const CatalogueIndex> current();

    static constexpr std::chrono::milliseconds revisionReuse{100};

private:
    // The file behind a link that points to this service's files, or "" for other links.
    QString localFile(const QString &link) const;
    struct FileFacts
    {
        qint64 size = 0;
        QDateTime modified;
        QString sha256;
    };
    CatalogueEntry entryFor(const StoredApp &app);
    void fillFileFacts(QJsonObject &record, const QString &link);

    CatalogueStore &m_store;
    const QString m_filesDir;
    std::mutex m_mutex;
    qint64 m_revision = -1;
    std::chrono::steady_clock::time_point m_askedAt; // when the store was asked for m_revision
    std::shared_ptr<const CatalogueIndex> m_index;
    QHash<QString, FileFacts> m_fileFacts;
};
