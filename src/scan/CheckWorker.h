#pragma once

// The check driver's hands: reads the store, merges a scan into it, sends the store to the matching service, applies
// the reply, saves, and re-reads the versions of App Store copies. It decides nothing about when to check and shows
// nothing; it says what it does through its signals.
//
// Owner: VLMainWindowController, which keeps it on the driver's check thread (a WorkerThread). Thread: every member
// is used on that thread only; the driver reaches it through queued calls, which run one after the other. The store
// is the driver's and outlives it; the store's own lock guards the records that other threads read meanwhile.

#include "scan/AppList.h"
#include "scan/AutomatchPost.h"

#include <QDateTime>
#include <QObject>

#include <memory>

class ClockTimer;
class VLScanData;
class VLSendAllatOnceHelper;
class WebExchange;
struct WebResult;

class CheckWorker : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        AppList scanned;
        bool background = false;
        bool manual = false; // the user's own check: the request says "manual"
        MemberFields member;
    };

    // The wait for the match is shown as turns of 0.09 s; the bar is full after this many.
    static constexpr int kWaitTurnMs = 90;
    static constexpr int kWaitTurnsToFull = 180;

    explicit CheckWorker(VLScanData &store);
    ~CheckWorker() override;

    // Reads the store file; storeLoaded follows with the first record's match time (invalid when none).
    void loadStore();
    // Forgets the records; the data folder was deleted.
    void resetStore();
    // Merge, match, apply and save; checkEnded follows, whatever happens.
    void match(const Request &request);
    void recheckAppStoreCopies();

signals:
    void storeLoaded(const QDateTime &firstMatched);
    void progress(double fraction);
    void status(const QString &text);
    // matched is false when nothing was found or the exchange failed (the merged records are kept then).
    void checkEnded(bool matched);
    void appStoreChecked();

private:
    // The caller holds a Change of the store.
    void mergeScan(const AppList &scanned);
    void applyMatches(const VLSendAllatOnceHelper &exchange);
    QString buildPost();
    void takeReply(const WebResult &result);
    void tickWait();
    void saveAppDatabase();
    void setProgress(double fraction);

    VLScanData &m_store;
    Request m_request;
    std::unique_ptr<WebExchange> m_exchange;
    ClockTimer *m_waitTurn = nullptr;
    int m_waitTurns = 0;
    double m_shownProgress = 0.0;
};
