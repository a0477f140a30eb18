#include "scan/BundleWalk.h"

#include "platform/FolderReader.h"
#include "platform/Log.h"

#include <QByteArrayView>
#include <QFile>
#include <QHash>

#include <algorithm>
#include <vector>

namespace {

const char *const kFolderExtensions[] = {"app", "prefPane", "saver", "webplugin", "plugin", "wdgt"};

bool isReported(QByteArrayView name, bool isFolder)
{
    if (isFolder && name == "Safari Cookies.bundle") {
        return true;
    }
    const qsizetype dot = name.lastIndexOf('.');
    if (dot <= 0) {
        return false;
    }
    const QByteArrayView extension = name.sliced(dot + 1);
    if (!isFolder) {
        return extension.compare("qtz", Qt::CaseInsensitive) == 0;
    }
    return std::any_of(std::begin(kFolderExtensions), std::end(kFolderExtensions), [&extension](const char *candidate) {
        return extension.compare(candidate, Qt::CaseInsensitive) == 0;
    });
}

// A folder or bundle, and whether its path goes through a link below the scope.
struct Entry
{
    QByteArray path;
    bool throughLink;
};

class Walker
{
public:
    explicit Walker(const std::atomic<bool> *cancel) : m_cancel(cancel) {}

    void walkScope(const QByteArray &scope)
    {
        // Depth first, entries in name order, so which of two paths to one bundle is reported never depends on
        // the order a file system happens to list a folder in.
        std::vector<Entry> pending = {{scope, false}};
        while (!pending.empty() && !cancelled()) {
            const Entry folder = std::move(pending.back());
            pending.pop_back();
            std::vector<Entry> subfolders = readFolder(folder);
            for (auto it = subfolders.rbegin(); it != subfolders.rend(); ++it) {
                pending.push_back(std::move(*it));
            }
        }
    }

    std::vector<QByteArray> takeHits()
    {
        std::vector<QByteArray> hits;
        hits.reserve(m_hits.size());
        for (Entry &hit : m_hits) {
            if (!hit.path.isNull()) {
                hits.push_back(std::move(hit.path));
            }
        }
        return hits;
    }

private:
    bool cancelled() const { return m_cancel && m_cancel->load(std::memory_order_relaxed); }

    // Reports the bundles in folder and returns the folders to walk next. What cannot be reached is passed over
    // with a log line, but for a folder that is not there at all (a scope may be missing).
    std::vector<Entry> readFolder(const Entry &folder)
    {
        std::vector<Entry> subfolders;
        FolderReader reader(folder.path);
        if (!reader.failure().isEmpty()) {
            if (!reader.missing()) {
                vlLog(QStringLiteral("skipping %1: %2").arg(QFile::decodeName(folder.path), reader.failure()));
            }
            return subfolders;
        }
        // A folder first reached through a link is walked once more when reached without one, so that what it holds
        // is known by where it lies; a link loop still ends, as every folder is walked at most twice.
        const auto visited = m_visited.constFind(reader.identity());
        if (visited != m_visited.cend() && (folder.throughLink || !*visited)) {
            return subfolders;
        }
        m_visited.insert(reader.identity(), folder.throughLink);
        const QByteArray prefix = folder.path.endsWith('/') ? folder.path : folder.path + '/';
        for (const FolderReader::Entry &entry : reader.entries()) {
            const bool isFolder = entry.kind == FolderReader::Kind::Folder;
            if (!isFolder && entry.kind != FolderReader::Kind::File) {
                continue;
            }
            const Entry found{prefix + entry.name, folder.throughLink || entry.isLink};
            if (!isReported(entry.name, isFolder)) {
                if (isFolder) {
                    subfolders.push_back(found);
                }
                continue;
            }
            if (found.path.size() > FolderReader::longestPath()) {
                vlLog(QStringLiteral("skipping %1: its path is too long").arg(QFile::decodeName(found.path)));
            } else if (const std::optional<FileIdentity> id = reader.identityOf(entry.name)) {
                report(*id, found); // else it has just gone
            }
        }
        return subfolders;
    }

    // One bundle is reported once; the index knows it by where it lies, so a path without links replaces one
    // through a link.
    void report(const FileIdentity &id, Entry hit)
    {
        const auto known = m_reported.find(id);
        if (known == m_reported.end()) {
            m_reported.insert(id, m_hits.size());
        } else if (!hit.throughLink && m_hits[*known].throughLink) {
            m_hits[*known].path = QByteArray();
            *known = m_hits.size();
        } else {
            return;
        }
        m_hits.push_back(std::move(hit));
    }

    const std::atomic<bool> *m_cancel;
    QHash<FileIdentity, bool> m_visited;    // walked only through a link so far
    QHash<FileIdentity, size_t> m_reported; // index into m_hits
    std::vector<Entry> m_hits;
};

} // namespace

namespace BundleWalk {

bool isReportedBundle(const QString &fileName, bool isFolder)
{
    return isReported(QFile::encodeName(fileName), isFolder);
}

QStringList findBundles(const QStringList &scopes, const std::atomic<bool> *cancel)
{
    Walker walker(cancel);
    for (const QString &scope : scopes) {
        if (!scope.isEmpty()) {
            walker.walkScope(QFile::encodeName(scope));
        }
    }
    const std::vector<QByteArray> hits = walker.takeHits();

    struct Found
    {
        QString key;
        QString path;
    };
    std::vector<Found> found;
    found.reserve(hits.size());
    for (const QByteArray &hit : hits) {
        const QString path = QFile::decodeName(hit);
        // A name that is not valid UTF-8 cannot be named again from its text: reading, matching and replacing the
        // bundle would all miss it.
        if (QFile::encodeName(path) != hit) {
            vlLog(QStringLiteral("skipping %1: its name is not valid UTF-8").arg(path));
            continue;
        }
        found.push_back({path.mid(path.lastIndexOf(QLatin1Char('/')) + 1).toCaseFolded(), path});
    }
    std::stable_sort(found.begin(), found.end(), [](const Found &a, const Found &b) { return a.key < b.key; });

    QStringList paths;
    paths.reserve(qsizetype(found.size()));
    for (Found &f : found) {
        paths.append(std::move(f.path));
    }
    return paths;
}

} // namespace BundleWalk
