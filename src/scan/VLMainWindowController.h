#pragma once

// The check driver: decides at start whether the stored scan can be shown or a new one must run, runs the
// user's check and the periodic background checks, merges each scan into the store, matches the store with the
// service, applies the replies, saves, and tells the user about new updates. It has no widgets: the desktop
// program shows what its signals say, velmora-cli prints it.
//
// Threads: the driver lives on the thread that owns the front end and never blocks it. Loading the store, merging,
// matching and saving run on one worker thread at a time; the signals arrive on the driver's thread. Records are
// changed only by that worker (under the store's mutex) while a check runs.

#include "scan/AppList.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

class VLAppScanner;
class VLMemberAccount;
class VLScanData;
class VLSendAllatOnceHelper;

class VLMainWindowController : public QObject
{
    Q_OBJECT

public:
    // A store older than this (seconds since its first record was matched) is scanned again at start.
    static constexpr qint64 kRescanAgeSeconds = 14400;

    explicit VLMainWindowController(QObject *parent = nullptr);
    ~VLMainWindowController() override;

    // The store, once a check or loadScanDataOrRunScan has read it (null before); read it between checks.
    VLScanData *scanData() const { return m_workerRunning ? nullptr : m_scanData.get(); }
    // While the start screen is up, progress and status are shown and notifications say "Scanning Complete".
    void setStartScreenShown(bool shown) { m_startScreenShown = shown; }
    bool donescanning() const { return m_donescanning.load(); }

    // At launch: shows the stored records, or scans when they are missing or older than four hours (never for
    // a launch by the login item).
    void loadScanDataOrRunScan(bool appLaunchedFromLoginItem);
    // The user's "Check for Updates". forceReset (the modifier-key variant) deletes the data folder first.
    void checkForUpdates(bool forceReset = false);
    void checkForUpdatesBackGround();
    void checkForUpdatesBackGroundFast();
    void checkForUpdatesToMASApps();

    // The outdated list the panel, the window, the badge and Update All show; empty while a check runs.
    AppList outdatedApps() const;

    // The member (VLMainWindowControllerMember.cpp). The account is changed on a member thread while a log-in
    // runs; read it after memberChanged.
    VLMemberAccount &memberAccount() { return *m_memberAccount; }
    // At start: the stored log-in (keychain, else the "login" cookie) on a member thread, then memberChanged.
    void checkMemberAndTryLogin();
    void logout();
    // Each runs on a member thread and ends with its signal.
    void loadWatchLists();
    // The purchases the store holds, sorted; loadPurchases asks the service first.
    void loadPurchaseHistory();
    void loadPurchases();
    void loadPromos();

signals:
    void progressChanged(double fraction);
    void statusChanged(const QString &status);
    // The records changed: refresh the lists, the panel and the badge (updateListAndPanel).
    void listChanged();
    // A background check found updates while the program runs without its status item.
    void changeStatusIconBlue();
    // A check ended; matched is false when the exchange with the service failed or nothing was found.
    void checkFinished(bool matched);
    // The member signed in or out.
    void memberChanged(bool isLoggedIn);
    void watchListsLoaded();
    void purchasesLoaded(const AppList &purchasedApps);
    void promosLoaded(const AppList &featuredPromoApps, const AppList &promoApps);

private:
    enum class Mode { Foreground, Background };

    void showScanningScreenAndStartScanning(bool background);
    void matchScanData(const AppList &scanned, Mode mode);
    // Runs work on the worker thread, then (when given) then on the driver's thread once the worker is done.
    void runOnWorker(std::function<void()> work, std::function<void()> then = {});
    // A check on the worker; checkFinished follows with its outcome.
    void runCheckOnWorker(std::function<bool()> check);
    bool loopScanBackgroundThread(const AppList &scanned, Mode mode);
    bool mergeScan(const AppList &scanned);
    QString buildPost(Mode mode);
    void applyMatches(const VLSendAllatOnceHelper &exchange, Mode mode);
    void saveAppDatabase();
    int numberOfUpdatesFoundSinceLastScan() const;
    void notifyAfterForegroundCheck();
    void checkForNewUpdatesSinceLastScanAndNotify();
    AppList storedOutdatedApps() const;
    void setProgress(double fraction);
    void setStatus(const QString &status);
    // Ends an exchange, success or failure, and passes matched on.
    bool finishCheck(bool matched);

    void subscribeToMemberFlags();
    void runOnMemberThread(std::function<void()> work);
    // Turns the calling thread's event loop in slices of 0.7 s until done() holds.
    // Gives up when the driver is going away.
    void waitUntil(const std::function<bool()> &done) const;
    void loadWatchListsFromServer();
    void loadPurchasesFromServer();
    void loadPromosFromServer();
    void sendBadPlists(const QStringList &paths);

    std::unique_ptr<VLScanData> m_scanData;
    std::unique_ptr<VLAppScanner> m_scanner;
    std::thread m_worker;
    std::atomic<bool> m_workerRunning{false};
    std::atomic<bool> m_donescanning{true};
    std::atomic<bool> m_startScreenShown{false};
    bool m_forceServerMatch = false;
    std::atomic<bool> m_checkForUpdatesManual{false};
    double m_shownProgress = 0.0;

    std::unique_ptr<VLMemberAccount> m_memberAccount;
    QThreadPool m_memberThreads;
    std::atomic<bool> m_doneLoadWatchLists{true};
    std::atomic<bool> m_doneLoadPurchases{true};
    std::atomic<bool> m_doneLoadPromos{true};
    std::atomic<bool> m_loadingWatchListsInProgress{false};
    std::atomic<bool> m_alreadyLoadedWatchLists{false};
    std::atomic<bool> m_loadingPurchasesInProgress{false};
    std::atomic<bool> m_alreadyLoadedPurchases{false};
    std::atomic<bool> m_stopping{false};
};
