#include "scan/VLMemberSession.h"

#include "platform/Log.h"
#include "platform/VLNotificationCenter.h"
#include "scan/VLAppScanner.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/BadPlistReports.h"
#include "services/VLCartSender.h"
#include "services/VLMemberProfileSaver.h"
#include "services/VLPromos.h"
#include "services/VLPurchases.h"
#include "services/VLWatchLists.h"

namespace {

void post(const char *name)
{
    VLNotificationCenter::defaultCenter().post(QString::fromLatin1(name));
}

// Runs then with the exchange's reply status once it has ended, at once when it has ended already.
void whenAnswered(VLServiceConnection *exchange, QObject *context, const std::function<void(int status)> &then)
{
    if (exchange->isDone()) {
        return then(exchange->serverResonse);
    }
    QObject::connect(exchange, &VLServiceConnection::done, context,
                     [exchange, then] { then(exchange->serverResonse); });
}

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
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

VLMemberAccount VLMemberSession::memberCopy() const
{
    VLMemberAccount copy = m_account;
    copy.password.clear();
    copy.signupPassword.clear();
    return copy;
}

void VLMemberSession::announceMember()
{
    emit memberChanged(memberCopy());
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

void VLMemberSession::login(const QString &email, const QString &password)
{
    enqueue([this, email, password](const std::function<void()> &done) {
        m_account.email = email;
        m_account.password = password;
        m_account.login();
        if (m_account.isLoggedIn) {
            vlLog(QStringLiteral("member logged in %1").arg(m_account.memberID));
            vlLog(QStringLiteral("member name %1").arg(m_account.fullname));
        }
        announceMember();
        emit loginEnded(memberCopy());
        done();
    });
}

void VLMemberSession::createAccount(const QString &email, const QString &password, const QString &firstName,
                                    const QString &lastName)
{
    enqueue([this, email, password, firstName, lastName](const std::function<void()> &done) {
        m_account.signupEmail = email;
        m_account.signupPassword = password;
        m_account.signupFirstName = firstName;
        m_account.signupLastName = lastName;
        m_account.createAccount();
        m_account.signupPassword.clear();
        announceMember();
        emit signupEnded(memberCopy());
        done();
    });
}

void VLMemberSession::saveAccountInfo(const VLMemberAccount &form)
{
    enqueue([this, form](const std::function<void()> &done) {
        for (QString VLMemberAccount::*field :
             {&VLMemberAccount::firstname, &VLMemberAccount::lastname, &VLMemberAccount::email_string,
              &VLMemberAccount::address, &VLMemberAccount::city, &VLMemberAccount::state, &VLMemberAccount::zip,
              &VLMemberAccount::country}) {
            m_account.*field = form.*field;
        }
        m_account.fullname = QStringLiteral("%1 %2").arg(m_account.firstname, m_account.lastname);
        QString alert;
        const auto alertBefore =
            std::exchange(m_account.showAlert, [&alert](const QString &message, bool) { alert = message; });
        VLMemberProfileSaver *saver = m_account.saveAccountInfo();
        m_account.showAlert = alertBefore;
        if (!saver) {
            emit profileSaveEnded(alert, true);
            return done();
        }
        announceMember();
        whenAnswered(saver, this, [this, alert, done](int status) {
            if (isSuccess(status)) {
                emit profileSaveEnded(alert, false);
            } else {
                emit profileSaveEnded(tr("The service did not save the profile"), true);
            }
            done();
        });
    });
}

void VLMemberSession::buyDeal(qint64 promoID, const VLMemberAccount &form)
{
    enqueue([this, promoID, form](const std::function<void()> &done) {
        if (!m_account.isLoggedIn) {
            emit dealOrdered(promoID, false);
            return done();
        }
        VLMemberAccount order = form;
        order.memberID = m_account.memberID;
        auto *cart = new VLCartSender(this);
        cart->releaseWhenDone();
        cart->post(VLCartSender::orderBody(order, promoID));
        whenAnswered(cart, this, [this, promoID, done](int status) {
            emit dealOrdered(promoID, isSuccess(status));
            done();
        });
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
