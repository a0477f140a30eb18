#include "http/Reply.h"

namespace Reply {

void fail(httplib::Response &res, int status, const QString &reason)
{
    res.status = status;
    res.set_content(reason.toStdString() + "\n", "text/plain; charset=utf-8");
}

void text(httplib::Response &res, const QString &body, const char *mime)
{
    res.status = 200;
    res.set_content(body.toStdString(), mime);
}

void bytes(httplib::Response &res, const QByteArray &body, const char *mime)
{
    res.status = 200;
    // Copied once, straight into the response: a matching reply is some 80 KB.
    res.set_content(body.constData(), size_t(body.size()), mime);
}

void json(httplib::Response &res, const QByteArray &body)
{
    bytes(res, body, "application/json");
}

QString baseUrl(const httplib::Request &req)
{
    QString host = QString::fromStdString(req.get_header_value("Host"));
    if (host.isEmpty() || host.contains(u'/') || host.contains(u' '))
        host = QString::fromStdString(req.local_addr) + u':' + QString::number(req.local_port);
    return QStringLiteral("http://") + host;
}

QString absoluteLink(const httplib::Request &req, const QString &link)
{
    return link.startsWith(u'/') ? baseUrl(req) + link : link;
}

} // namespace Reply
