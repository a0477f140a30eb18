#include "platform/WebRequest.h"

#include "platform/WebExchange.h"

#include <QEventLoop>

namespace {

constexpr qint64 MiB = 1024 * 1024;
constexpr int minute = 60 * 1000;

} // namespace

WebRequest::WebRequest(Kind kind)
{
    switch (kind) {
    case Kind::Page:
        maxBodyBytes = 8 * MiB;
        deadlineMs = 2 * minute;
        break;
    case Kind::Blacklist:
        maxBodyBytes = 1 * MiB;
        deadlineMs = 1 * minute;
        break;
    case Kind::List:
        maxBodyBytes = 32 * MiB;
        deadlineMs = 5 * minute;
        break;
    case Kind::MatchReply:
        maxBodyBytes = 64 * MiB;
        deadlineMs = 15 * minute;
        break;
    }
}

WebRequest WebRequest::get(const QUrl &url, const QString &logName, Kind kind)
{
    WebRequest request(kind);
    request.url = url;
    request.logName = logName;
    return request;
}

WebRequest WebRequest::postForm(const QUrl &url, const QByteArray &form, const QString &logName, Kind kind)
{
    WebRequest request(kind);
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

WebResult sendWebRequest(const WebRequest &request)
{
    WebExchange exchange(request);
    QEventLoop loop;
    QObject::connect(&exchange, &WebExchange::finished, &loop, &QEventLoop::quit);
    QObject::connect(&exchange, &WebExchange::failed, &loop, &QEventLoop::quit);
    exchange.start();
    if (!exchange.isDone()) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return exchange.result();
}
