#pragma once

// One HTTP exchange, made synchronously: the request is a plain value, the outcome a plain struct.
// sendWebRequest waits in a local event loop of the calling thread, with a network manager of that thread's
// own, so it belongs on worker threads (and in tests and the CLI), never on the UI thread.

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

struct WebRequest
{
    QByteArray method = QByteArrayLiteral("GET");
    QUrl url;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    // Given up when nothing moves for this long, in either direction (like a platform URL request's time-out).
    int timeoutMs = 60000;
    // Redirects are followed, except a hop from https to http, whose 3xx reply is handed back; false hands back
    // every 3xx reply as it is.
    bool followRedirects = true;
    // The name in the log line of a failed connection ("<name> Connection failed! Error - ..."); "" logs nothing.
    QString logName;

    static WebRequest get(const QUrl &url, const QString &logName = QString());
    // A form post: the body as given, with Content-Type "application/x-www-form-urlencoded".
    static WebRequest postForm(const QUrl &url, const QByteArray &form, const QString &logName = QString());
};

struct WebResult
{
    // The HTTP status; 0 when no reply came (connection refused, time-out, malformed reply ...).
    int status = 0;
    QByteArray body;
    QList<QPair<QByteArray, QByteArray>> headers;
    // The address that answered, after any redirects.
    QUrl finalUrl;
    // The failure's description when no reply came, with secrets redacted; "" otherwise.
    QString errorText;
    bool timedOut = false;

    bool replied() const { return status != 0; }
    bool succeeded() const { return status >= 200 && status < 300; }
    // The first header of that name (case-insensitive), or a null array.
    QByteArray header(const QByteArray &name) const;
};

WebResult sendWebRequest(const WebRequest &request);
