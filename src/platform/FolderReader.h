#pragma once

// The entries of one folder as the system lists them: names as bytes (not always UTF-8), what each entry is (for a
// link, what it points to), and the identity of the folder and of its entries, by which a walk knows a folder or
// bundle it has met before under another path.

#include <QByteArray>
#include <QHashFunctions>
#include <QString>

#include <optional>
#include <vector>

struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;

    bool operator==(const FileIdentity &other) const { return device == other.device && inode == other.inode; }
};

inline size_t qHash(const FileIdentity &id, size_t seed = 0)
{
    return qHashMulti(seed, id.device, id.inode);
}

class FolderReader
{
public:
    enum class Kind { Folder, File, Other };

    struct Entry
    {
        QByteArray name;
        Kind kind;
        bool isLink;
    };

    // Opens the folder at path (bytes as the system takes them).
    explicit FolderReader(const QByteArray &path);
    ~FolderReader();
    FolderReader(const FolderReader &) = delete;
    FolderReader &operator=(const FolderReader &) = delete;

    // Why the folder could not be opened, in the system's words; "" when it was.
    QString failure() const { return m_failure; }
    // Whether nothing is at the path (or a folder on the way is missing).
    bool missing() const { return m_missing; }
    FileIdentity identity() const { return m_identity; }

    // The entries in byte order of their names, without "." and ".."; dangling links and entries that vanish
    // while the folder is read are left out. Read once.
    std::vector<Entry> entries();
    // The identity of an entry (of what a link points to), or nullopt when it cannot be had.
    std::optional<FileIdentity> identityOf(const QByteArray &name) const;

    // The longest path the system opens, in bytes.
    static qsizetype longestPath();

private:
    void *m_dir = nullptr;
    int m_fd = -1;
    QString m_failure;
    bool m_missing = false;
    FileIdentity m_identity;
};
