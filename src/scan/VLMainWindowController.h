#pragma once

// The check driver: decides at start whether the stored scan can be shown or a new one must run, runs the user's
// check and the periodic background checks, hands each scan to its worker to merge, match, apply and save, and tells
// the user about new updates. It has no widgets: the desktop program shows what its signals say, velmora-cli prints
// it. It also holds the member session, whose list loads it lets start only between checks.
//
// Owner: the front end (the desktop program's application, a velmora-cli command). Thread: the front end's; every
// call and every signal is on that thread, and nothing here blocks it. The work runs on two threads the driver owns,
// each with one worker object and its queue: the check thread (CheckWorker) and the member thread (VLMemberSession).
// The store exists from construction to destruction; other threads change its records only under its lock, so read
// them under scanData().mutex() or through apps() and outdatedApps(), during a check too.

#include "scan/AppList.h"
#include "scan/InstallLinks.h"
#include "services/VLMemberAccount.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class CheckWorker;
class VLAppScanner;
class VLMemberSession;
class VLScanData;
class WorkerThread;

class VLMainWindowController : public QObject
{
    Q_OBJECT

public:
    // A store older than this (seconds since its first record was matched) is scanned again at start.
    static constexpr qint64 kRescanAgeSeconds = 14400;

    explicit VLMainWindowController(QObject *parent = nullptr);
    ~VLMainWindowController() override;

    // Not read until loadScanDataOrRunScan or a check; see the threads above for reading it during a check.
    VLScanData &scanData() const { return *m_scanData; }
    // While the start screen is up, a foreground check shows its progress and status, and its notification says
    // "Scanning Complete". Background checks never touch it.
    void setStartScreenShown(bool shown) { m_startScreenShown = shown; }
    // True when no check runs.
    bool donescanning() const { return m_donescanning; }

    // At launch: reads the store, then shows it, or scans when it is missing or older than four hours (never for a
    // launch by the login item).
    void loadScanDataOrRunScan(bool appLaunchedFromLoginItem);
    // The user's "Check for Updates"; refused (checkRefused) while a check runs. forceReset (the modifier-key
    // variant) deletes the data folder first.
    void checkForUpdates(bool forceReset = false);
    // The periodic checks: skipped, with their log line, while a check runs.
    void checkForUpdatesBackGround();
    void checkForUpdatesBackGroundFast();
    void checkForUpdatesToMASApps();
    // Runs then once no check runs: at once when none does, else when the running one has ended.
    void whenDoneScanning(std::function<void()> then);
    // An install link, once no check runs, against this store; linkOpened follows.
    void installFromLink(const QString &link);

    // The outdated list the panel, the window, the badge and Update All show, read under the store's lock.
    AppList outdatedApps() const;

    // The member as the session last told it (passwords empty); nothing here changes the session.
    const VLMemberAccount &memberAccount() const { return m_member; }
    // At start: the stored log-in (keychain, else the "login" cookie), then memberChanged.
    void checkMemberAndTryLogin();
    // The forms: each ends with its signal below. A log-in or sign-up that succeeds is followed by a fresh check,
    // matched as the member, once no check runs.
    void login(const QString &email, const QString &password);
    void createAccount(const QString &email, const QString &password, const QString &firstName,
                       const QString &lastName);
    // form carries the profile's name, e-mail and address fields.
    void saveAccountInfo(const VLMemberAccount &form);
    // form carries the purchase form's postal address.
    void buyDeal(qint64 promoID, const VLMemberAccount &form);
    void logout();
    // Each is queued on the member thread and ends with its signal. The watch list waits for a running check.
    void loadWatchLists();
    void loadPurchaseHistory();
    void loadPurchases();
    void loadPromos();

signals:
    // A check began: the scan is running. background tells the periodic checks from the user's and the start's.
    void checkStarted(bool background);
    // The user's check was not started, because one runs; reason says so in the user's words.
    void checkRefused(const QString &reason);
    void progressChanged(double fraction);
    void statusChanged(const QString &status);
    // The records changed: refresh the lists, the panel and the badge (updateListAndPanel).
    void listChanged();
    // A background check found updates while the program runs without its status item.
    void changeStatusIconBlue();
    // A check ended; matched is false when the exchange with the service failed or nothing was found.
    void checkFinished(bool matched);
    void memberChanged(bool isLoggedIn);
    // The forms' answers; account is the member as memberAccount() gives it, with the form's status line.
    void loginEnded(const VLMemberAccount &account);
    void signupEnded(const VLMemberAccount &account);
    void profileSaveEnded(const QString &message, bool critical);
    void dealOrdered(qint64 promoID, bool taken);
    void watchListsLoaded();
    void purchasesLoaded(const AppList &purchasedApps);
    void promosLoaded(const AppList &featuredPromoApps, const AppList &promoApps);
    // An install link was read: its apps with what each asks for, in the link's order.
    void linkOpened(const QList<InstallLinks::LinkedApp> &linked);

private:
    void startCheck(bool background, bool manual);
    void matchScanData(const AppList &scanned, bool background);
    void takeStoreLoaded(const QDateTime &firstMatched);
    void takeCheckEnded(bool matched);
    void endCheck();
    void forwardProgress(double fraction);
    void forwardStatus(const QString &status);
    int numberOfUpdatesFoundSinceLastScan() const;
    void notifyAfterForegroundCheck();
    void checkForNewUpdatesSinceLastScanAndNotify();
    void onMember(std::function<void(VLMemberSession &)> call);
    void takeFormSignIn(const VLMemberAccount &account);

    std::unique_ptr<VLScanData> m_scanData;
    CheckWorker *m_checkWorker;
    std::unique_ptr<WorkerThread> m_checkThread;
    VLMemberSession *m_memberSession;
    std::unique_ptr<WorkerThread> m_memberThread;
    std::unique_ptr<VLAppScanner> m_scanner;
    VLMemberAccount m_member;
    QList<std::function<void()>> m_whenDoneScanning;
    bool m_donescanning = true;
    bool m_backgroundCheck = false;
    bool m_checkForUpdatesManual = false;
    bool m_startScreenShown = false;
    bool m_appLaunchedFromLoginItem = false;
};
