#pragma once

// The scan store's file "vldscan.vld6" on disk: JSON {"apps": [...]} replaced atomically, so a reader or a
// process killed while writing never leaves half a file; a lock beside it ("vldscan.vld6.lock") for processes that
// change it; and a stamp to notice that another process has written it since.

#include "platform/FileLock.h"
#include "platform/FileStamp.h"
#include "scan/AppList.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <functional>
#include <optional>

class ScanStoreFile
{
public:
    enum class Status { Missing, Loaded, Damaged };

    // What could not be taken from the file, and where the file's bytes were kept (empty when they could not be).
    struct Damage
    {
        QString reason;
        QString keptAs;
    };

    struct Contents
    {
        Status status = Status::Missing;
        AppList apps;
        QDateTime modified;
        FileStamp stamp;
        std::optional<Damage> damage; // also for a Loaded file of which some entries had to be left out
    };

    // No store comes near this: a record takes a few kilobytes with its release notes and licence, so even tens of
    // thousands of records stay far below it, while a file past it would cost that much memory to read.
    static constexpr qint64 kLargestStore = qint64(1) << 30;

    explicit ScanStoreFile(const QString &path);

    // "vldscan.vld6" in the data folder, which is created when missing.
    static QString defaultPath();

    QString path() const { return m_path; }
    QString damagedPath() const { return m_path + QStringLiteral(".damaged"); }
    FileStamp stamp() const { return FileStamp::of(m_path); }

    // The file's records. A file that is no plain file, is larger than kLargestStore, cannot be read, is no JSON
    // object or has no "apps" list is Damaged, is not read further and has been kept aside as damagedPath() (moved
    // when the lock could be had, its bytes copied otherwise); an entry that is not an object is left out, and the
    // file is copied aside so that it is not lost with the next save. restore(archive) makes the record of each entry;
    // it is called on several threads at once, and no entry's parsed object outlives its call.
    Contents read(const std::function<AppRef(const QJsonObject &)> &restore);
    // Replaces the file with {"apps": [...]} and gives the new file's stamp; nullopt when it could not be written
    // completely: the old file then stays as it was, and the reason is logged. appendRecord(i, out) appends the
    // compact JSON object of record i, for i below count.
    std::optional<FileStamp> write(qsizetype count, const std::function<void(qsizetype, QByteArray &)> &appendRecord);

    // The lock beside the file; re-entrant within one ScanStoreFile, exclusive against every other ScanStoreFile, in
    // this process or another. timeoutMs < 0 waits as long as it takes.
    bool lock(int timeoutMs = -1) { return m_lock.lock(timeoutMs); }
    void unlock() { m_lock.unlock(); }
    bool isLocked() const { return m_lock.isLocked(); }

private:
    Damage keepAside(const FileStamp &seen, const QString &reason, const std::optional<QByteArray> &bytes, bool move);
    void removeLeftoverSaves();

    QString m_path;
    FileLock m_lock;
};
