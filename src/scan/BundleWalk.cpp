#include "scan/BundleWalk.h"

#include "platform/Log.h"

#include <QFile>
#include <QHash>

#include <algorithm>
#include <cstring>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct FileId
{
    dev_t device;
    ino_t inode;
    bool operator==(const FileId &other) const { return device == other.device && inode == other.inode; }
};

size_t qHash(const FileId &id, size_t seed = 0)
{
    return qHashMulti(seed, quint64(id.device), quint64(id.inode));
}

const char *const kFolderExtensions[] = {"app", "prefPane", "saver", "webplugin", "plugin", "wdgt"};

bool isReported(const char *name, size_t length, bool isFolder)
{
    const char *dot = static_cast<const char *>(memrchr(name, '.', length));
    if (isFolder && length == 21 && std::memcmp(name, "Safari Cookies.bundle", 21) == 0) {
        return true;
    }
    if (!dot || dot == name) {
        return false;
    }
    const char *extension = dot + 1;
    const size_t extensionLength = length - size_t(extension - name);
    if (!isFolder) {
        return extensionLength == 3 && qstrnicmp(extension, "qtz", 3) == 0;
    }
    for (const char *candidate : kFolderExtensions) {
        if (std::strlen(candidate) == extensionLength && qstrnicmp(extension, candidate, extensionLength) == 0) {
            return true;
        }
    }
    return false;
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

    // Reports the bundles in folder and returns the folders to walk next.
    std::vector<Entry> readFolder(const Entry &folder)
    {
        std::vector<Entry> subfolders;
        const int fd = open(folder.path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0) {
            return subfolders;
        }
        struct stat info = {};
        if (fstat(fd, &info) != 0) {
            close(fd);
            return subfolders;
        }
        // A folder first reached through a link is walked once more when reached without one, so that what it holds
        // is known by where it lies; a link loop still ends, as every folder is walked at most twice.
        const auto visited = m_visited.constFind({info.st_dev, info.st_ino});
        if (visited != m_visited.cend() && (folder.throughLink || !*visited)) {
            close(fd);
            return subfolders;
        }
        m_visited.insert({info.st_dev, info.st_ino}, folder.throughLink);
        DIR *dir = fdopendir(fd);
        if (!dir) {
            close(fd);
            return subfolders;
        }
        std::vector<std::pair<QByteArray, unsigned char>> entries;
        while (const dirent *entry = readdir(dir)) {
            const char *name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
                continue;
            }
            entries.emplace_back(QByteArray(name), entry->d_type);
        }
        std::sort(entries.begin(), entries.end());
        const int folderFd = dirfd(dir);
        for (const auto &[name, type] : entries) {
            bool isFolder = type == DT_DIR;
            bool isFile = type == DT_REG;
            bool isLink = type == DT_LNK;
            struct stat target = {};
            bool haveTarget = false;
            if (type == DT_UNKNOWN) {
                if (fstatat(folderFd, name.constData(), &target, AT_SYMLINK_NOFOLLOW) != 0) {
                    continue;
                }
                isLink = S_ISLNK(target.st_mode);
                haveTarget = !isLink;
            }
            if (isLink && fstatat(folderFd, name.constData(), &target, 0) != 0) {
                continue; // a dangling link
            }
            if (isLink || haveTarget) {
                haveTarget = true;
                isFolder = S_ISDIR(target.st_mode);
                isFile = S_ISREG(target.st_mode);
            }
            if (!isFolder && !isFile) {
                continue;
            }
            const QByteArray path =
                folder.path.endsWith('/') ? QByteArray(folder.path + name) : QByteArray(folder.path + '/' + name);
            const bool throughLink = folder.throughLink || isLink;
            if (isReported(name.constData(), size_t(name.size()), isFolder)) {
                if (!haveTarget && fstatat(folderFd, name.constData(), &target, 0) != 0) {
                    continue;
                }
                report({target.st_dev, target.st_ino}, {path, throughLink});
            } else if (isFolder) {
                subfolders.push_back({path, throughLink});
            }
        }
        closedir(dir);
        return subfolders;
    }

    // One bundle is reported once; the index knows it by where it lies, so a path without links replaces one
    // through a link.
    void report(const FileId &id, Entry hit)
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
    QHash<FileId, bool> m_visited;    // walked only through a link so far
    QHash<FileId, size_t> m_reported; // index into m_hits
    std::vector<Entry> m_hits;
};

} // namespace

namespace BundleWalk {

bool isReportedBundle(const QString &fileName, bool isFolder)
{
    const QByteArray name = QFile::encodeName(fileName);
    return isReported(name.constData(), size_t(name.size()), isFolder);
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
