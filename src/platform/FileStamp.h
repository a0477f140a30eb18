#pragma once

// What identifies one version of a file on disk, to notice that another process has replaced or changed it since:
// writing a file anew (a new file renamed over the old name) always gives a new inode, and so a new stamp.

#include <QDateTime>
#include <QString>

#include <sys/types.h>

struct stat;

struct FileStamp
{
    bool exists = false;
    bool regular = false; // a plain file, not a folder, pipe, device or socket
    dev_t device = 0;
    ino_t inode = 0;
    qint64 size = 0;
    qint64 modifiedNs = 0;

    bool operator==(const FileStamp &other) const = default;

    // The file the name leads to now (links followed); a stamp that does not exist when there is none.
    static FileStamp of(const QString &path);
    static FileStamp fromStat(const struct stat &info);

    QDateTime modified() const { return QDateTime::fromMSecsSinceEpoch(modifiedNs / 1000000, Qt::UTC); }
};
