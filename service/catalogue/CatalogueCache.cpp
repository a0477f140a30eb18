#include "catalogue/CatalogueCache.h"

#include "catalogue/RecordFields.h"
#include "storage/SqlDatabase.h"
#include "wire/JsonText.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

namespace {

const QLatin1StringView filesPrefix("/files/");

QString sha256Of(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return {};
    return QString::fromLatin1(hash.result().toHex());
}

} // namespace

CatalogueCache::CatalogueCache(CatalogueStore &store, QString filesDir)
    : m_store(store), m_filesDir(std::move(filesDir))
{
}

std::shared_ptr<const CatalogueIndex> CatalogueCache::current()
{
    const auto askedAt = std::chrono::steady_clock::now();
    {
        std::lock_guard lock(m_mutex);
        if (m_index && askedAt - m_askedAt < revisionReuse)
            return m_index;
    }
    const qint64 revision = m_store.revision();
    std::lock_guard lock(m_mutex);
    if (!m_index || revision != m_revision) {
        std::vector<CatalogueEntry> entries;
        for (const StoredApp &app : m_store.apps())
            entries.push_back(entryFor(app));
        auto index = std::make_shared<const CatalogueIndex>(std::move(entries));
        // What a failing database gave is not kept: the request is refused and the next one reads again.
        if (StorageFault::occurred())
            return index;
        m_index = std::move(index);
        m_revision = revision;
    }
    if (!StorageFault::occurred())
        m_askedAt = std::max(m_askedAt, askedAt);
    return m_index;
}

QString CatalogueCache::localFile(const QString &link) const
{
    if (!link.startsWith(filesPrefix) || m_filesDir.isEmpty())
        return {};
    const QString relative = QUrl::fromPercentEncoding(link.mid(filesPrefix.size()).toUtf8());
    if (relative.split(u'/').contains(QStringLiteral("..")))
        return {};
    return QDir(m_filesDir).filePath(relative);
}

CatalogueEntry CatalogueCache::entryFor(const StoredApp &app)
{
    CatalogueEntry entry;
    entry.id = app.id;
    entry.record = app.record;
    entry.link = app.record.value(QLatin1StringView("link")).toString();
    entry.isBeta = app.record.value(QLatin1StringView("stability")).toString().contains(u"beta", Qt::CaseInsensitive);
    fillFileFacts(entry.record, entry.link);
    entry.encodedMembers = encodeShortKeyMembers(entry.id, entry.record);
    // A link elsewhere is the same in every reply; one on this service is made absolute per request.
    QByteArray tail;
    if (!entry.link.isEmpty() && !entry.link.startsWith(u'/')) {
        tail = ",\"e1\":";
        JsonText::appendQuoted(tail, entry.link);
    }
    entry.replyTail = ZlibJoin::fragment(tail + ',' + entry.encodedMembers + '}');
    if (entry.link.startsWith(u'/'))
        entry.localLinkJson = JsonText::quoted(entry.link).sliced(1);
    return entry;
}

void CatalogueCache::fillFileFacts(QJsonObject &record, const QString &link)
{
    const QString path = localFile(link);
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile())
        return;
    FileFacts &facts = m_fileFacts[path];
    if (facts.size != info.size() || facts.modified != info.lastModified() || facts.sha256.isEmpty())
        facts = {info.size(), info.lastModified(), sha256Of(path)};
    if (!record.contains(QLatin1StringView("filehash")) && !facts.sha256.isEmpty())
        record.insert(QLatin1StringView("filehash"), facts.sha256);
    // Sizes are kilobytes as text.
    if (!record.contains(QLatin1StringView("file_size")))
        record.insert(QLatin1StringView("file_size"), QString::number((facts.size + 1023) / 1024));
}
