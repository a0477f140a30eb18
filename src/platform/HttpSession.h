#pragma once

// The HTTP session of one thread: one QNetworkAccessManager for every request the thread makes, so connections
// are reused, with the process-wide HttpCookieJar behind it. A manager works only on its own thread, hence one per
// thread; it is made on the thread's first request and goes when the thread ends. Idle connections are closed by
// the service after a few seconds, so a quiet thread holds none of its workers for long.

#include <QByteArray>
#include <QList>
#include <QNetworkRequest>
#include <QPair>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

using HttpHeaders = QList<QPair<QByteArray, QByteArray>>;

class HttpSession
{
public:
    ~HttpSession();
    HttpSession(const HttpSession &) = delete;
    HttpSession &operator=(const HttpSession &) = delete;

    // What a reply may hold that its reader has not taken yet. Without a limit the network thread reads on while the
    // reader is busy, and a fast host fills memory with what the reader will only refuse.
    static constexpr qint64 kReadBufferBytes = 1024 * 1024;

    // The calling thread's session.
    static HttpSession &current();

    // A request with these headers; redirects are followed except from https to http (that hop's 3xx reply ends
    // the exchange with QNetworkReply::InsecureRedirectError), or not at all.
    static QNetworkRequest request(const QUrl &url, const HttpHeaders &headers, bool followRedirects);
    // Starts the request; the reply belongs to the caller and to this thread.
    QNetworkReply *send(const QNetworkRequest &request, const QByteArray &method, const QByteArray &body = {});
    // The finished reply failed as a transfer (refused, broken, timed out, aborted), not with an HTTP status. The
    // refused hop from https to http is not such a failure: its 3xx reply is the answer.
    static bool transferFailed(const QNetworkReply &reply);

private:
    HttpSession();

    std::unique_ptr<QNetworkAccessManager> m_manager;
};
