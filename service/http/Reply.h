#pragma once

// Small helpers every route uses to answer.

#include <QByteArray>
#include <QString>

#include <httplib.h>

namespace Reply {

// Every failure answer has a one-line reason as text; the request log shows its status.
void fail(httplib::Response &res, int status, const QString &reason);
void text(httplib::Response &res, const QString &body, const char *mime = "text/plain; charset=utf-8");
void bytes(httplib::Response &res, const QByteArray &body, const char *mime);
void json(httplib::Response &res, const QByteArray &body);

// "http://" + the address the request came to, so links work on whatever port the service listens.
QString baseUrl(const httplib::Request &req);
// A stored link that is a path on this service becomes absolute; other links stay as they are.
QString absoluteLink(const httplib::Request &req, const QString &link);

} // namespace Reply
