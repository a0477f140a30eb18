#include "platform/HttpSession.h"

#include "platform/HttpCookieJar.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThread>
#include <QThreadStorage>

namespace {

// A manager owns its jar and a jar belongs to one thread, so each session has a jar of its own that only passes
// every cookie on to the process-wide one.
class SessionCookieJar : public QNetworkCookieJar
{
public:
    using QNetworkCookieJar::QNetworkCookieJar;

    QList<QNetworkCookie> cookiesForUrl(const QUrl &url) const override
    {
        return HttpCookieJar::shared().cookiesForUrl(url);
    }
    bool setCookiesFromUrl(const QList<QNetworkCookie> &cookieList, const QUrl &url) override
    {
        return HttpCookieJar::shared().setCookiesFromUrl(cookieList, url);
    }
};

} // namespace

HttpSession::HttpSession() : m_manager(std::make_unique<QNetworkAccessManager>())
{
    m_manager->setCookieJar(new SessionCookieJar(m_manager.get()));
}

HttpSession::~HttpSession() = default;

HttpSession &HttpSession::current()
{
    // QThreadStorage deletes a thread's session when the thread ends.
    static QThreadStorage<HttpSession *> sessions;
    if (!sessions.hasLocalData()) {
        sessions.setLocalData(new HttpSession);
        // The main thread's would go only after the application, and its network thread's cached TLS connections
        // cannot be closed cleanly then: it goes first, while the application still stands.
        const QCoreApplication *app = QCoreApplication::instance();
        if (app && app->thread() == QThread::currentThread()) {
            qAddPostRoutine([] { sessions.setLocalData(nullptr); });
        }
    }
    return *sessions.localData();
}

QNetworkRequest HttpSession::request(const QUrl &url, const HttpHeaders &headers, bool followRedirects)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, followRedirects
                                                                       ? QNetworkRequest::NoLessSafeRedirectPolicy
                                                                       : QNetworkRequest::ManualRedirectPolicy);
    for (const auto &[name, value] : headers) {
        request.setRawHeader(name, value);
    }
    return request;
}

QNetworkReply *HttpSession::send(const QNetworkRequest &request, const QByteArray &method, const QByteArray &body)
{
    if (method == "GET") {
        return m_manager->get(request);
    }
    if (method == "POST") {
        return m_manager->post(request, body);
    }
    return m_manager->sendCustomRequest(request, method, body);
}

bool HttpSession::transferFailed(const QNetworkReply &reply)
{
    const QNetworkReply::NetworkError error = reply.error();
    return error != QNetworkReply::NoError && error != QNetworkReply::InsecureRedirectError &&
           error < QNetworkReply::ContentAccessDenied;
}
