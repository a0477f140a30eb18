#include "scan/VLMemberSession.h"

#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "scan/VLAppScanner.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/BadPlistReports.h"
#include "services/VLPromos.h"
#include "services/VLPurchases.h"
#include "services/VLWatchLists.h"

namespace {

void post(const char *name)
{
    VLNotificationCenter::defaultCenter().post(QString::fromLatin1(name));
}

// Runs then with the list once its exchange has ended, success or not, and deletes it.
template <typename List> void whenDone(List *list, std::function<void(List &)> then)
{
    QObject::connect(list, &VLServiceConnection::done, list, [list, then = std::move(then)] {
        then(*list);
        list->deleteLater();
    });
}

} // namespace

VLMemberSession::VLMemberSession(VLScanData &store) : m_store(store)
{
    qRegisterMetaType<VLMemberAccount>();
    VLNotificationCenter::defaultCenter().subscribe(
        QString::fromLatin1(kVLBadPlistFound), this,
        [this](const QVariant &paths) { sendBadPlists(paths.toStringList()); });
}

void VLMemberSession::enqueue(Request request)
{
    m_queue.append(std::move(request));
    runNext();
}

void VLMemberSession::runNext()
{
    if (m_busy || m_queue.isEmpty()) {
        return;
    }
    m_busy = true;
    const Request request = m_queue.takeFirst();
    request([this] {
        m_busy = false;
        // Later, so that a long queue does not grow the stack.
        QMetaObject::invokeMethod(this, &VLMemberSession::runNext, Qt::QueuedConnection);
    });
}

void VLMemberSession::announceMember()
{
    VLMemberAccount copy = m_account;
    copy.password.clear();
    copy.signupPassword.clear();
    emit memberChanged(copy);
}

void VLMemberSession::checkMemberAndTryLogin()
{
    enqueue([this](const std::function<void()> &done) {
        m_account.loadAccountFromKeychain();
        if (m_account.password.isEmpty()) {
            m_account.loadAccountFromCookie();
        }
        m_account.login();
        // A refused log-in has forgotten the member already; one the service did not answer keeps the stored
        // password for the next start rather than throwing it away.
        if (m_account.isLoggedIn) {
            vlLog(QStringLiteral("member logged in %1").arg(m_account.memberID));
            vlLog(QStringLiteral("member name %1").arg(m_account.fullname));
        }
        announceMember();
        if (m_account.isLoggedIn) {
            vlLog(QStringLiteral("processing purchases from app database"));
            loadPurchaseHistory();
        }
        done();
    });
}

void VLMemberSession::logout()
{
    enqueue([this](const std::function<void()> &done) {
        m_account.logout();
        VLMemberLists::removePurchasesAndWatchListApps(m_store);
        emit listChanged();
        announceMember();
        done();
    });
}

void VLMemberSession::loadWatchLists()
{
    enqueue([this](const std::function<void()> &done) {
        post("VLLoadWatchListsInProgress");
        const auto finish = [this, done] {
            post("VLAlreadyLoadedWatchLists");
            post("VLUpdateDoneScannerFlag");
            emit watchListsLoaded();
            done();
        };
        const std::optional<AppList> apps = m_store.apps();
        if (!m_account.isLoggedIn || !apps || apps->isEmpty()) {
            return finish();
        }
        auto *lists = new VLWatchLists(this);
        whenDone<VLWatchLists>(lists, [this, finish](VLWatchLists &reply) {
            if (!reply.serverApps.isEmpty()) {
                VLMemberLists::mergeWatchListItems(m_store, reply.serverApps);
                emit listChanged();
            }
            finish();
        });
        lists->getWatchlists(QStringLiteral("id=%1").arg(m_account.memberID));
    });
}

void VLMemberSession::loadPurchaseHistory()
{
    // The purchases the store holds already; no request.
    enqueue([this](const std::function<void()> &done) {
        post("VLLoadPurchasesInProgress");
        if (m_account.isLoggedIn) {
            const AppList apps = m_store.apps().value_or(AppList());
            if (apps.isEmpty()) {
                vlLog(QStringLiteral("no purchases found in cache"));
            } else {
                {
                    const QMutexLocker lock(&m_store.mutex());
                    emit purchasesLoaded(VLMemberLists::sortedByOrderDate(apps));
                }
                if (!m_store.saveDataToDisk()) {
                    vlLog(QStringLiteral("Save DB error %1").arg(m_store.filePath()));
                }
            }
        }
        post("VLAlreadyLoadedPurchases");
        post("VLUpdateDoneScannerFlag");
        done();
    });
}

void VLMemberSession::loadPurchases()
{
    enqueue([this](const std::function<void()> &done) {
        if (!m_account.isLoggedIn) {
            return done();
        }
        auto *purchases = new VLPurchases(this);
        whenDone<VLPurchases>(purchases, [this, done](VLPurchases &reply) {
            emit purchasesLoaded(VLMemberLists::mergePurchaseItems(m_store, reply.serverApps));
            emit listChanged();
            vlLog(QStringLiteral("done load purchases from server"));
            done();
        });
        purchases->getPurchases(QStringLiteral("id=%1").arg(m_account.memberID));
    });
}

void VLMemberSession::loadPromos()
{
    enqueue([this](const std::function<void()> &done) {
        auto *promos = new VLPromos(this);
        whenDone<VLPromos>(promos, [this, done](VLPromos &reply) {
            // The first two deals are featured.
            AppList featured;
            AppList others;
            for (const QVariant &entry : std::as_const(reply.serverApps)) {
                (featured.size() < 2 ? featured : others)
                    .append(std::make_shared<VLApp>(VLApp::initWithPromoItem(entry.toMap())));
            }
            if (!reply.serverApps.isEmpty()) {
                emit promosLoaded(featured, others);
            }
            vlLog(QStringLiteral("Getting Promos..."));
            if (m_account.isLoggedIn) {
                loadPurchaseHistory();
            }
            done();
        });
        promos->getPromos(QStringLiteral("promos"));
    });
}

void VLMemberSession::sendBadPlists(const QStringList &paths)
{
    BadPlistReports::send(paths, m_account.isLoggedIn ? m_account.memberID : 0, this);
}
