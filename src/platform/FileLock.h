#pragma once

// An exclusive lock between processes (and between FileLock objects of one process), held on a lock file.
//
// It is the kernel's lock on the open file, which the kernel drops the moment its holder dies, however it dies: a
// lock file that only records a holder can be left half-written by a kill and then stays taken for ever. The lock
// file itself is never removed: that would let two processes lock two different files of the same name.
//
// One FileLock belongs to one owner at a time (callers serialise their own use of it).

#include <QString>

class FileLock
{
public:
    explicit FileLock(const QString &path);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    // Re-entrant: every successful lock() needs its unlock(). timeoutMs < 0 waits as long as it takes; false when the
    // lock could not be had in time or the lock file cannot be opened.
    bool lock(int timeoutMs = -1);
    void unlock();
    bool isLocked() const { return m_depth > 0; }

private:
    QString m_path;
    int m_fd = -1;
    int m_depth = 0;
};
