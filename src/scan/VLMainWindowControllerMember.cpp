// The driver's member side: the stored log-in at start, the watch list, the purchases and the deals merged into the
// store, log-out, and the upload of property lists a scan could not read. Log-ins and list loads wait for the
// service, so they run on member threads of their own, never on the driver's thread.

#include "scan/VLMainWindowController.h"

#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "scan/VLAppScanner.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/BadPlistReports.h"
#include "services/VLGoogleTracking.h"
#include "services/VLMemberAccount.h"
#include "services/VLPromos.h"
#include "services/VLPurchases.h"
#include "services/VLWatchLists.h"

#include <QEventLoop>
#include <QTimer>

namespace {
constexpr int kWaitSliceMs = 700;
} // namespace

void VLMainWindowController::subscribeToMemberFlags()
{
    m_memberThreads.setMaxThreadCount(4);
    auto &center = VLNotificationCenter::defaultCenter();
    const auto raise = [this, &center](const char *name, std::atomic<bool> &flag) {
        center.subscribe(QString::fromLatin1(name), this, [&flag](const QVariant &) { flag = true; });
    };
    raise("VLULoadWatchListsDoneFlag", m_doneLoadWatchLists);
    raise("VLULoadPurchasesDoneFlag", m_doneLoadPurchases);
    raise("VLULoadPromosDoneFlag", m_doneLoadPromos);
    raise("VLLoadWatchListsInProgress", m_loadingWatchListsInProgress);
    raise("VLAlreadyLoadedWatchLists", m_alreadyLoadedWatchLists);
    raise("VLLoadPurchasesInProgress", m_loadingPurchasesInProgress);
    raise("VLAlreadyLoadedPurchases", m_alreadyLoadedPurchases);
    center.subscribe(QString::fromLatin1(kVLBadPlistFound), this,
                     [this](const QVariant &paths) { sendBadPlists(paths.toStringList()); });
}

void VLMainWindowController::runOnMemberThread(std::function<void()> work)
{
    m_memberThreads.start(std::move(work));
}

void VLMainWindowController::waitUntil(const std::function<bool()> &done) const
{
    while (!done() && !m_stopping) {
        QEventLoop slice;
        QTimer::singleShot(kWaitSliceMs, &slice, &QEventLoop::quit);
        slice.exec();
    }
}

void VLMainWindowController::checkMemberAndTryLogin()
{
    runOnMemberThread([this] {
        VLMemberAccount &account = *m_memberAccount;
        account.loadAccountFromKeychain();
        if (account.password.isEmpty()) {
            account.loadAccountFromCookie();
        }
        account.login();
        // A refused log-in has forgotten the member already; one the service did not answer keeps the stored
        // password for the next start rather than throwing it away.
        if (account.isLoggedIn) {
            vlLog(QStringLiteral("member logged in %1").arg(account.memberID));
            vlLog(QStringLiteral("member name %1").arg(account.fullname));
        }
        const bool loggedIn = account.isLoggedIn;
        QMetaObject::invokeMethod(
            this, [this, loggedIn] { emit memberChanged(loggedIn); }, Qt::QueuedConnection);
        if (loggedIn) {
            vlLog(QStringLiteral("processing purchases from app database"));
            loadPurchaseHistory();
        }
    });
}

void VLMainWindowController::logout()
{
    m_memberAccount->logout();
    runOnMemberThread([this] {
        if (m_scanData) {
            VLMemberLists::removePurchasesAndWatchListApps(*m_scanData);
        }
        QMetaObject::invokeMethod(
            this,
            [this] {
                emit listChanged();
                emit memberChanged(false);
            },
            Qt::QueuedConnection);
    });
}

void VLMainWindowController::loadWatchLists()
{
    runOnMemberThread([this] {
        auto &center = VLNotificationCenter::defaultCenter();
        center.post(QStringLiteral("VLLoadWatchListsInProgress"));
        if (m_memberAccount->isLoggedIn && m_scanData && m_scanData->apps() && !m_scanData->apps()->isEmpty()) {
            loadWatchListsFromServer();
        }
        center.post(QStringLiteral("VLAlreadyLoadedWatchLists"));
        center.post(QStringLiteral("VLUpdateDoneScannerFlag"));
        QMetaObject::invokeMethod(
            this, [this] { emit watchListsLoaded(); }, Qt::QueuedConnection);
    });
}

void VLMainWindowController::loadWatchListsFromServer()
{
    // The merge follows the scan and the deals, so it never races their changes to the same records.
    waitUntil([this] { return m_donescanning.load(); });
    waitUntil([this] { return m_doneLoadPromos.load(); });
    VLWatchLists lists;
    m_doneLoadWatchLists = false;
    lists.getWatchlists(QStringLiteral("id=%1").arg(m_memberAccount->memberID));
    waitUntil([this] { return m_doneLoadWatchLists.load(); });
    if (lists.serverApps.isEmpty()) {
        return;
    }
    m_doneLoadWatchLists = false;
    VLMemberLists::mergeWatchListItems(*m_scanData, lists.serverApps);
    m_doneLoadWatchLists = true;
}

void VLMainWindowController::loadPurchaseHistory()
{
    // The purchases the store holds already; no request.
    runOnMemberThread([this] {
        auto &center = VLNotificationCenter::defaultCenter();
        center.post(QStringLiteral("VLLoadPurchasesInProgress"));
        if (m_memberAccount->isLoggedIn) {
            const AppList apps = m_scanData ? m_scanData->apps().value_or(AppList()) : AppList();
            if (apps.isEmpty()) {
                vlLog(QStringLiteral("no purchases found in cache"));
            } else {
                const AppList sorted = VLMemberLists::sortedByOrderDate(apps);
                QMetaObject::invokeMethod(
                    this, [this, sorted] { emit purchasesLoaded(sorted); }, Qt::QueuedConnection);
            }
        }
        center.post(QStringLiteral("VLAlreadyLoadedPurchases"));
        center.post(QStringLiteral("VLUpdateDoneScannerFlag"));
    });
}

void VLMainWindowController::loadPurchases()
{
    runOnMemberThread([this] {
        if (m_memberAccount->isLoggedIn && m_scanData) {
            loadPurchasesFromServer();
        }
    });
}

void VLMainWindowController::loadPurchasesFromServer()
{
    VLPurchases purchases;
    purchases.getPurchases(QStringLiteral("id=%1").arg(m_memberAccount->memberID));
    m_doneLoadPurchases = false;
    waitUntil([this] { return m_doneLoadPurchases.load(); });
    const AppList sorted = VLMemberLists::mergePurchaseItems(*m_scanData, purchases.serverApps);
    QMetaObject::invokeMethod(
        this, [this, sorted] { emit purchasesLoaded(sorted); }, Qt::QueuedConnection);
    m_loadingPurchasesInProgress = false;
    vlLog(QStringLiteral("done load purchases from server"));
}

void VLMainWindowController::loadPromos()
{
    runOnMemberThread([this] {
        loadPromosFromServer();
        vlLog(QStringLiteral("Getting Promos..."));
        if (m_memberAccount->isLoggedIn && !m_loadingPurchasesInProgress) {
            loadPurchaseHistory();
        }
    });
}

void VLMainWindowController::loadPromosFromServer()
{
    m_doneLoadPromos = false;
    VLPromos promos;
    promos.getPromos(QStringLiteral("promos"));
    waitUntil([this] { return m_doneLoadPromos.load(); });
    if (promos.serverApps.isEmpty()) {
        return;
    }
    // The first two deals are featured.
    AppList featured;
    AppList others;
    for (const QVariant &entry : std::as_const(promos.serverApps)) {
        (featured.size() < 2 ? featured : others)
            .append(std::make_shared<VLApp>(VLApp::initWithPromoItem(entry.toMap())));
    }
    QMetaObject::invokeMethod(
        this, [this, featured, others] { emit promosLoaded(featured, others); }, Qt::QueuedConnection);
}

void VLMainWindowController::sendBadPlists(const QStringList &paths)
{
    BadPlistReports::send(paths, m_memberAccount->isLoggedIn ? m_memberAccount->memberID : 0, this);
}
