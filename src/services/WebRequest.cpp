#include "services/WebRequest.h"

#include "model/Log.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <memory>

WebRequest WebRequest::get(const QUrl &url, const QString &logName)
{
    WebRequest request;
    request.url = url;
    request.logName = logName;
    return request;
}

WebRequest WebRequest::postForm(const QUrl &url, const QByteArray &form, const QString &logName)
{
    WebRequest request;
    request.method = QByteArrayLiteral("POST");
    request.url = url;
    request.body = form;
    request.headers.append({QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/x-www-form-urlencoded")});
    request.logName = logName;
    return request;
}

QByteArray WebResult::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0) {
            return value;
        }
    }
    return {};
}

namespace {

QNetworkReply *start(QNetworkAccessManager &manager, const QNetworkRequest &request, const WebRequest &web)
{
    if (web.method == "GET") {
        return manager.get(request);
    }
    if (web.method == "POST") {
        return manager.post(request, web.body);
    }
    return manager.sendCustomRequest(request, web.method, web.body);
}

} // namespace

WebResult sendWebRequest(const WebRequest &web)
{
    WebResult result;
    // A manager per call, on the calling thread: managers are not shared between threads, and no idle
    // keep-alive connection outlives the exchange (the service gives each open connection a worker of its own).
    QNetworkAccessManager manager;
    manager.setRedirectPolicy(web.followRedirects ? QNetworkRequest::NoLessSafeRedirectPolicy
                                                  : QNetworkRequest::ManualRedirectPolicy);
    QNetworkRequest request(web.url);
    for (const auto &[name, value] : web.headers) {
        request.setRawHeader(name, value);
    }

    std::unique_ptr<QNetworkReply> reply(start(manager, request, web));
    QEventLoop loop;
    QTimer idle;
    idle.setSingleShot(true);
    idle.setInterval(web.timeoutMs);
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&idle, &QTimer::timeout, &loop, [&result, &reply] {
        result.timedOut = true;
        reply->abort();
    });
    const auto restartIdle = [&idle] { idle.start(); };
    QObject::connect(reply.get(), &QNetworkReply::downloadProgress, &idle, restartIdle);
    QObject::connect(reply.get(), &QNetworkReply::uploadProgress, &idle, restartIdle);
    idle.start();
    if (!reply->isFinished()) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    idle.stop();

    result.status = result.timedOut ? 0 : reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.finalUrl = reply->url();
    if (result.replied()) {
        result.body = reply->readAll();
        result.headers = reply->rawHeaderPairs();
    } else {
        // The wording the platform uses for a request that ran out of time; Qt would only say "canceled".
        result.errorText =
            redactSecrets(result.timedOut ? QStringLiteral("The request timed out.") : reply->errorString());
        if (!web.logName.isEmpty()) {
            vlLog(QStringLiteral("%1 Connection failed! Error - %2").arg(web.logName, result.errorText));
        }
    }
    return result;
}
