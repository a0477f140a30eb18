#pragma once

// One HTTP exchange as plain values: the request, and the outcome as a struct. WebExchange runs one without
// blocking (for the desktop program's UI thread); sendWebRequest runs one to its end in a local event loop of the
// calling thread, so it belongs on worker threads, in tests and in the CLI, never on the UI thread. Both use the
// calling thread's HttpSession. Files are fetched with HttpDownload, which writes to disk as the bytes arrive.
//
// A reply is read into memory, so every request has a cap on its body and a deadline for the whole exchange besides
// the idle time-out: a host that floods or trickles fails the request like a connection that breaks (status 0, the
// reason in errorText, and the log line of a failed connection).

#include "platform/HttpSession.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

#include <atomic>

struct WebRequest
{
    // What is being fetched decides how large its reply may be and how long the exchange may take.
    enum class Kind {
        Page,       // a page, an icon, an app's information, a short link: 8 MB, 2 minutes
        Blacklist,  // the scanner's blacklist: 1 MB, 1 minute
        List,       // watch lists, purchases, deals: 32 MB, 5 minutes
        MatchReply, // the compressed matching reply: 64 MB, 15 minutes
    };

    QByteArray method = QByteArrayLiteral("GET");
    QUrl url;
    HttpHeaders headers;
    QByteArray body;
    // Given up when nothing moves for this long, in either direction (like a platform URL request's time-out).
    int timeoutMs = 60000;
    // Given up when the whole exchange takes longer than this, even while bytes still trickle in.
    int deadlineMs = 0;
    // Given up when the reply's body (as decoded) grows past this many bytes.
    qint64 maxBodyBytes = 0;
    // Redirects are followed, except a hop from https to http, whose 3xx reply is handed back; false hands back
    // every 3xx reply as it is.
    bool followRedirects = true;
    // The name in the log line of a failed connection ("<name> Connection failed! Error - ..."); "" logs nothing.
    QString logName;
    // The exchange gives up soon after this turns true (it must outlive the exchange); the caller's choice, not logged.
    const std::atomic<bool> *cancel = nullptr;

    explicit WebRequest(Kind kind = Kind::Page);
    static WebRequest get(const QUrl &url, const QString &logName = QString(), Kind kind = Kind::Page);
    // A form post: the body as given, with Content-Type "application/x-www-form-urlencoded".
    static WebRequest postForm(const QUrl &url, const QByteArray &form, const QString &logName = QString(),
                               Kind kind = Kind::Page);
};

struct WebResult
{
    // The HTTP status; 0 when no reply came (connection refused, time-out, reply too large, malformed reply ...).
    int status = 0;
    QByteArray body;
    HttpHeaders headers;
    // The address that answered, after any redirects.
    QUrl finalUrl;
    // The failure's description when no reply came, with secrets redacted; "" otherwise.
    QString errorText;
    // Ran out of time: idle for too long, or past the deadline.
    bool timedOut = false;

    bool replied() const { return status != 0; }
    bool succeeded() const { return status >= 200 && status < 300; }
    // The first header of that name (case-insensitive), or a null array.
    QByteArray header(const QByteArray &name) const;
};

WebResult sendWebRequest(const WebRequest &request);
