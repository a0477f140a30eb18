#pragma once

// What unpacking one archive may write, so that a small archive cannot fill the disk: its unpacked bytes and entries
// are bounded by limits tied to the archive's size, and its file system keeps a reserve free. Tools run confined:
// no file larger than the whole budget, and, run as root, without the rights to make device nodes or to keep set-id
// bits. A tool is watched while it writes (the file system's free bytes and inodes, cheap to read), and the folder is
// counted exactly once it is done.

#include <QCoreApplication>
#include <QString>
#include <QStringList>

struct UnpackLimits
{
    // The unpacked bytes may reach ratio times the archive's size, and never less than minBytes.
    qint64 ratio = 200;
    qint64 minBytes = qint64(512) << 20;
    // One entry per bytesPerEntry of archive, and never less than minEntries.
    qint64 bytesPerEntry = 64;
    qint64 minEntries = 200000;
    // Left free on the file system that is written to.
    qint64 reserveBytes = qint64(256) << 20;
};

class UnpackBudget
{
    Q_DECLARE_TR_FUNCTIONS(UnpackBudget)

public:
    UnpackBudget(const QString &folder, qint64 archiveBytes, const UnpackLimits &limits = {});

    qint64 maxBytes() const { return m_maxBytes; }
    qint64 maxEntries() const { return m_maxEntries; }

    // Before a step: "" when the folder's file system has more than the reserve free, else why not.
    QString checkFreeSpace() const;
    // While a tool writes: "" to go on, else why it must stop.
    QString watch() const;
    // After: "" when the folder holds no more than the budget allows, else why it is refused.
    QString checkFolder() const;
    // The command line that runs tool with args under the budget's confinement.
    QStringList confine(const QString &tool, const QStringList &args) const;
    // Why a tool that passed its budget failed.
    QString tooLarge() const;
    QString tooManyEntries() const;

private:
    QString m_folder;
    UnpackLimits m_limits;
    qint64 m_maxBytes;
    qint64 m_maxEntries;
    // The file system's free bytes and inodes when the budget was made.
    qint64 m_freeBytes = -1;
    qint64 m_freeInodes = -1;
};
