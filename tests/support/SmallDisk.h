#pragma once

// A place where writing fails past a small capacity, as on a nearly full disk: a tmpfs of that size mounted over a
// folder when this process may mount (root in CI can), else a file-size limit for this whole process
// (RLIMIT_FSIZE, with SIGXFSZ ignored, so a write past it fails with EFBIG instead of killing the process). Both
// end with this object. When neither can be had, skipReason() says why: QSKIP with it, never pass silently.

#include <QString>

#include <csignal>

class SmallDisk
{
public:
    SmallDisk(const QString &folder, qint64 capacity = 256 * 1024);
    ~SmallDisk();
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isReady() const { return m_skipReason.isEmpty(); }
    QString skipReason() const { return m_skipReason; }
    qint64 capacity() const { return m_capacity; }

private:
    QString m_folder;
    qint64 m_capacity;
    bool m_mounted = false;
    bool m_limited = false;
    unsigned long long m_oldLimit = 0;
    void (*m_oldHandler)(int) = SIG_DFL;
    QString m_skipReason;
};
