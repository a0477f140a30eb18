#pragma once

// What the system says about one file: whether it can be reached (and if not, why, in the system's words), its
// size and its times, to the nanosecond.

#include <QString>

struct FileStatus
{
    enum class Links { Follow, Own }; // Own: a link itself, not what it points to

    QString failure;          // "" when the file was reached
    qint64 size = 0;          // bytes
    qint64 modifiedNsecs = 0; // since 1970-01-01 UTC
    qint64 accessedNsecs = 0;
    bool isFolder = false; // with Links::Own, never a link to one
    uid_t owner = 0;

    bool reached() const { return failure.isEmpty(); }

    // path as NativePath gives it.
    static FileStatus of(const QString &path, Links links = Links::Follow);
};
