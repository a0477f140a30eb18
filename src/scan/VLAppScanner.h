#pragma once

// Finds the software installed on this machine and hands the records to the check driver.
//
// A new scanner is made for every scan; making one starts reading the service's blacklist on a thread of its own, and
// the scan waits for those names only once its walk has found the bundles to sift. createSearchPredicate()
// starts the scan on a worker thread and returns at once; the outcome arrives on the scanner's own thread, through
// its event loop, as the notification "VLAppScannerFinished" (or "VLAppScannerFinishedBackground" when
// sendResultsToBackgroundCheker is set) with the AppList as its object, or with no object when nothing was found
// or the scan failed. doneScanning() turns true just before that notification is posted.

#include "scan/AppList.h"
#include "scan/VLBlacklist.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

struct VLMdItem;

inline constexpr char kVLAppScannerFinished[] = "VLAppScannerFinished";
inline constexpr char kVLAppScannerFinishedBackground[] = "VLAppScannerFinishedBackground";
// The property lists of the scan's bundles that could not be read, posted before the scan's outcome; object: their
// paths.
inline constexpr char kVLBadPlistFound[] = "VLBadPlistFound";

class VLAppScanner : public QObject
{
    Q_OBJECT

public:
    // The built-in blacklist followed by the service host's list (fetched in the background).
    explicit VLAppScanner(QObject *parent = nullptr);
    // The given blacklist only; nothing is fetched.
    explicit VLAppScanner(const VLBlacklist &blacklist, QObject *parent = nullptr);
    ~VLAppScanner() override;

    // The folders searched, in order: the local domain's under the setting volumeRoot, the user's under $HOME,
    // then the setting searchpaths as given.
    static QStringList searchScopes();

    // Starts a scan over searchScopes(); a scan already running is abandoned for the new one.
    void createSearchPredicate();
    void runQuery();

    // Waits for the service's names when they have not come yet.
    bool appIsOnBlackList(const VLMdItem &item);

    // The whole scan, blocking: bundles found under scopes, blacklisted ones left out, as records. The bundles
    // are read by this thread and threads - 1 helpers (0: as many as the machine has cores, at most 8).
    static AppList collectApps(const QStringList &scopes, const VLBlacklist &blacklist,
                               const std::atomic<bool> *cancel = nullptr, int threads = 0);

    // Waits for the service's names when they have not come yet.
    const QStringList &blackListApps();
    const QStringList &scopes() const { return m_scopes; }
    bool sendResultsToBackgroundCheker() const { return m_sendResultsToBackgroundCheker; }
    void setSendResultsToBackgroundCheker(bool background) { m_sendResultsToBackgroundCheker = background; }
    bool doneScanning() const { return m_doneScanning.load(); }
    void setDoneScanning(bool done) { m_doneScanning.store(done); }

private:
    struct Run;

    void startRun();
    void stopRun();
    void finishRun(const std::shared_ptr<Run> &run);
    void takeServerNames();

    VLBlacklist m_blacklist;
    // The service's names while they are being fetched; invalid once appended to m_blacklist (or never fetched).
    std::shared_future<QStringList> m_serverNames;
    std::shared_ptr<std::atomic<bool>> m_stopFetch = std::make_shared<std::atomic<bool>>(false);
    QStringList m_scopes;
    bool m_sendResultsToBackgroundCheker = false;
    std::atomic<bool> m_doneScanning{false};
    std::shared_ptr<Run> m_run;
    std::thread m_thread;
};
