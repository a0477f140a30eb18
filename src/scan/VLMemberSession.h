#pragma once

// The member's side of the program: the stored log-in at start, log-out, the watch list, the purchases and the deals
// merged into the store, and the upload of property lists a scan could not read. Requests are queued and run one at
// a time, each to its end (a list load waits for its reply by signal, not by polling), so a watch-list load queued
// after the deals starts when the deals are in.
//
// Owner: VLMainWindowController, which holds it on a WorkerThread. Thread: the session's own; the account and every
// field here are used there only. Others learn of the member through memberChanged, which carries a copy without the
// password. The store is the driver's and outlives the session.

#include "scan/AppList.h"
#include "services/VLMemberAccount.h"

#include <QObject>

#include <functional>

class VLScanData;

class VLMemberSession : public QObject
{
    Q_OBJECT

public:
    explicit VLMemberSession(VLScanData &store);

    // Each is queued behind the requests before it; call them on the session's thread (WorkerThread::post).
    void checkMemberAndTryLogin();
    // The log-in and sign-up forms' exchanges; each ends with its signal, and memberChanged when it signed in.
    void login(const QString &email, const QString &password);
    void createAccount(const QString &email, const QString &password, const QString &firstName,
                       const QString &lastName);
    // The profile form: form's name, e-mail and address fields replace the member's, then are checked and posted.
    void saveAccountInfo(const VLMemberAccount &form);
    // Orders one deal for the member, with the purchase form's postal address.
    void buyDeal(qint64 promoID, const VLMemberAccount &form);
    void logout();
    void loadWatchLists();
    // The purchases the store holds, sorted; loadPurchases asks the service first.
    void loadPurchaseHistory();
    void loadPurchases();
    void loadPromos();

signals:
    // The member signed in or out; account is a copy, its passwords empty.
    void memberChanged(const VLMemberAccount &account);
    // A form's exchange ended; account is a copy as above, with its status line (errorfield, createErrorfield).
    void loginEnded(const VLMemberAccount &account);
    void signupEnded(const VLMemberAccount &account);
    // The profile was posted (critical false), or a check refused it; message is the alert's text.
    void profileSaveEnded(const QString &message, bool critical);
    // The deals host took the order, or not.
    void dealOrdered(qint64 promoID, bool taken);
    // The store's records changed.
    void listChanged();
    void watchListsLoaded();
    void purchasesLoaded(const AppList &purchasedApps);
    void promosLoaded(const AppList &featuredPromoApps, const AppList &promoApps);

private:
    // A request; it calls done when it has ended, and the next one starts.
    using Request = std::function<void(const std::function<void()> &done)>;

    void enqueue(Request request);
    void runNext();
    void announceMember();
    VLMemberAccount memberCopy() const;
    void sendBadPlists(const QStringList &paths);

    VLScanData &m_store;
    VLMemberAccount m_account;
    QList<Request> m_queue;
    bool m_busy = false;
};
