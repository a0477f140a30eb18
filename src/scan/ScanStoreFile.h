#pragma once

// The scan store's file "vldscan.vld6" on disk: JSON {"apps": [...]} replaced atomically, so a reader or a
// process killed while writing never leaves half a file; a lock beside it for processes that change it; and a
// stamp to notice that another process has written it since.
//
// The lock is the kernel's lock on the file "vldscan.vld6.lock", which the kernel drops the moment its holder
// dies, however it dies: a lock file that only records a holder can be left half-written by a kill and then
// stays taken for ever.

#include <QDateTime>
#include <QJsonArray>
#include <QString>

#include <optional>

#include <sys/types.h>

class ScanStoreFile
{
public:
    // What identifies one version of the file: a rewrite always gives a new inode, and so a new stamp.
    struct Stamp
    {
        bool exists = false;
        dev_t device = 0;
        ino_t inode = 0;
        qint64 size = 0;
        qint64 modifiedNs = 0;
        bool operator==(const Stamp &other) const = default;
    };

    enum class Status { Missing, Loaded, Damaged };

    struct Contents
    {
        Status status = Status::Missing;
        QJsonArray apps;
        QDateTime modified;
        Stamp stamp;
    };

    explicit ScanStoreFile(const QString &path);
    ~ScanStoreFile();
    ScanStoreFile(const ScanStoreFile &) = delete;
    ScanStoreFile &operator=(const ScanStoreFile &) = delete;

    // "vldscan.vld6" in the data folder, which is created when missing.
    static QString defaultPath();

    QString path() const { return m_path; }
    QString damagedPath() const { return m_path + QStringLiteral(".damaged"); }
    Stamp stamp() const;

    // The file's records. A file that cannot be read, is no JSON object or has no "apps" list is Damaged and has
    // been kept aside as damagedPath() (moved when the lock could be had, copied otherwise); an entry that is not
    // an object is left out, and the file is copied aside so that it is not lost with the next save.
    Contents read();
    // Replaces the file with {"apps": apps} and gives the new file's stamp; nullopt when it could not be written
    // (the old file then stays).
    std::optional<Stamp> write(const QJsonArray &apps);

    // The lock beside the file ("vldscan.vld6.lock"); re-entrant within one ScanStoreFile, exclusive against every
    // other ScanStoreFile, in this process or another. timeoutMs < 0 waits as long as it takes.
    bool lock(int timeoutMs = -1);
    void unlock();
    bool isLocked() const { return m_lockDepth > 0; }

private:
    void keepAside(const Stamp &seen, const std::optional<QByteArray> &bytes, bool move);
    void removeLeftoverSaves();

    QString m_path;
    int m_lockFd = -1;
    int m_lockDepth = 0;
};
