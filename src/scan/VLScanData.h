#pragma once

// The last scan, kept: the ordered records found on this machine and matched by the service, plus the
// purchases and deals remembered although not installed. One store per process, kept in "vldscan.vld6".
//
// Thread safety: every operation takes the store's re-entrant mutex; hold mutex() yourself to walk apps() and
// change records as one step.
//
// Two processes (the desktop program and velmora-cli) share the file. A process that changes the store wraps
// the whole read-change-write in a Change: it takes the file lock, reloads the records first when another
// process has written the file since this one read or wrote it, and releases the lock when it ends. Keep a
// Change short: a match with the service is better done between two Changes, applying its reply by digest.

#include "scan/AppList.h"
#include "scan/ScanStoreFile.h"

#include <QDateTime>
#include <QRecursiveMutex>

#include <functional>
#include <optional>

class VLScanData
{
public:
    // Reads the store file (a missing file leaves apps() absent) and runs the sanity check.
    VLScanData();
    explicit VLScanData(const QString &filePath);
    // The store of filePath, not read yet: apps() is absent until loadDataFromDisk(), so a front end can hold a store
    // at once and have it read on a worker.
    struct Unread
    {
    };
    VLScanData(const QString &filePath, Unread);

    static QString pathForDataFile();
    QString filePath() const { return m_file.path(); }

    // Replaces the records with the file's; absent when the file is missing or damaged (then kept aside).
    void loadDataFromDisk();
    // The latest damage found in the file (what could not be taken from it, and where it was kept); nullopt while
    // every read took the file whole. A front end tells the user, as records were lost with it.
    std::optional<ScanStoreFile::Damage> damage() const;
    // Writes the records atomically (nothing while they are absent); false when the file could not be written (the
    // records stay as they are).
    bool saveDataToDisk();

    void doQuickSanityCheck();
    void updateAppsUsingNewScan(const AppList &newScan);

    AppRef appWithVLID(const QString &vlID) const;
    bool hasAppWithVLID(const QString &vlID) const;
    // updating tells which records have an update downloading or installing (the jobs' owner knows); those are skipped.
    bool hasOutdatedAppWithVLID(const QString &vlID, const std::function<bool(const VLApp &)> &updating = {}) const;
    bool hasPurchaseWithVLID(const QString &vlID) const;
    bool hasPurchaseInstalledWithVLID(const QString &vlID) const;

    // A copy of the list (the records themselves are shared); nullopt when absent.
    std::optional<AppList> apps() const;
    void setApps(const std::optional<AppList> &apps);
    QDateTime fileModDate() const;

    QRecursiveMutex &mutex() const { return m_mutex; }

    // Reloads the records when another process has written the file since this store last read or wrote it (a file
    // since gone or damaged leaves the records as they are). Returns true when it reloaded. Callers that change the
    // store use a Change, which does this under the lock. freshScan, a scan just made and about to be merged, stands
    // for reading its bundles again.
    bool reloadIfChangedOnDisk(const AppList &freshScan = {});

    class Change
    {
    public:
        // timeoutMs < 0 waits for the lock as long as another process holds it. freshScan as for reloadIfChangedOnDisk.
        explicit Change(VLScanData &store, int timeoutMs = -1, const AppList &freshScan = {});
        ~Change();
        Change(const Change &) = delete;
        Change &operator=(const Change &) = delete;

        bool isLocked() const { return m_locked; }
        bool reloaded() const { return m_reloaded; }

    private:
        VLScanData &m_store;
        bool m_locked = false;
        bool m_reloaded = false;
    };

private:
    ScanStoreFile::Contents readFile(const AppList &freshScan = {});

    mutable QRecursiveMutex m_mutex;
    ScanStoreFile m_file;
    FileStamp m_knownStamp;
    std::optional<ScanStoreFile::Damage> m_damage;
    std::optional<AppList> m_apps;
    QDateTime m_fileModDate;
};
