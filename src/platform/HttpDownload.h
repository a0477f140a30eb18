#pragma once

// A file fetched straight to disk on the calling thread's HttpSession: the bytes are written (and flushed) as they
// arrive, so a download of any size takes no memory to speak of, and a part left by a failed or cancelled download is
// kept, for the next try to ask only for the rest. Files are fetched as they are ("Accept-Encoding: identity"), so
// sizes and offsets are the file's; redirects are followed except from https to http. There is no deadline: a large
// file may take as long as it takes while bytes keep coming at the least rate asked for. A body that ends before the
// length its host announced is a broken transfer (its part kept for resuming), never a finished file.
//
// On a worker thread: HttpDownload download(request); connect progress; DownloadResult r = download.run();
// On the UI thread: connect progress and done, start(). Lives on the thread that made it; delete it with
// deleteLater, not from a slot of its own signals.

#include "platform/HttpSession.h"

#include <QFile>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>

struct DownloadRequest
{
    QUrl url;
    HttpHeaders headers;
    // The file is written into folder (made when missing) as fileName; an empty fileName takes the name the reply
    // suggests (its Content-Disposition, else the last segment of the address it came from).
    QString folder;
    QString fileName;
    // When folder/fileName already holds the start of the file, only the rest is asked for ("Range: bytes=N-"). A
    // host that answers 200 instead sends the whole file, which replaces the part.
    bool resume = true;
    // Given up when no byte arrives for this long.
    int timeoutMs = 60000;
    // Given up when fewer than minBytesPerSecond arrive in a window of rateWindowMs (0: no least rate).
    qint64 minBytesPerSecond = 0;
    int rateWindowMs = 0;
    // The file may not grow past this many bytes (-1: no bound); a host that announces or sends more fails.
    qint64 maxBytes = -1;
    // The download stops soon after this turns true, from any thread (it must outlive the download).
    const std::atomic<bool> *cancel = nullptr;
    // The name in the log line of a failed connection; "" logs nothing.
    QString logName;
    // Called before each redirect is followed, with the address it leads to: it may change the headers sent there.
    // Unset, the headers go unchanged to every hop.
    std::function<void(const QUrl &next, HttpHeaders &headers)> onRedirect;
};

struct DownloadResult
{
    enum class Outcome { Finished, Failed, Canceled };

    Outcome outcome = Outcome::Failed;
    // The HTTP status of the last response; 0 when none came.
    int status = 0;
    // Why it failed: the transfer's error, or "HTTP <status>" for a reply that is not the file.
    QString errorText;
    // No progress, or too little: a transfer worth resuming.
    bool timedOut = false;
    // The file would have passed the request's maxBytes.
    bool overLimit = false;
    // The file written: whole when Finished, the part kept for resuming otherwise; "" when no file was begun.
    QString filePath;
    // The reply's Content-Type without its parameters ("text/html").
    QByteArray mimeType;
    // Bytes in the file, and the whole file's size (-1 when the host did not say).
    qint64 received = 0;
    qint64 expected = -1;
    // The host continued an existing part (206 from the part's end).
    bool resumed = false;
    QUrl finalUrl;

    bool finished() const { return outcome == Outcome::Finished; }
};

class QNetworkReply;

class HttpDownload : public QObject
{
    Q_OBJECT

public:
    explicit HttpDownload(const DownloadRequest &request, QObject *parent = nullptr);
    ~HttpDownload() override;

    void start();
    // start(), then this thread's event loop until the download has ended.
    DownloadResult run();
    bool isDone() const { return m_done; }
    const DownloadResult &result() const { return m_result; }

public slots:
    // Stops the download; the part stays on disk.
    void cancel();

signals:
    // The file's response is in (status, mimeType, filePath, expected, resumed) and nothing is written yet; a receiver
    // that does not want the file (a web page instead of an archive) cancels here.
    void responded(const DownloadResult &state);
    // After every write: bytes in the file so far, of expected (-1 when unknown).
    void progress(qint64 received, qint64 expected);
    // Emitted once, when the download has ended in any way.
    void done(const DownloadResult &result);

private:
    void send(qint64 offset);
    bool beginFile();
    void writeData();
    void replyFinished();
    // Follows the finished reply's redirect by hand (onRedirect is set); false when it is not one to follow.
    bool followRedirect(QNetworkReply &reply);
    void stop(const QString &reason, bool timedOut);
    void checkRate();
    // Whether a 206 response of length bytes continues the part exactly as asked; sets the whole file's size.
    bool continuesPart(qint64 length);
    void finish(DownloadResult::Outcome outcome, const QString &errorText);

    DownloadRequest m_request;
    DownloadResult m_result;
    std::unique_ptr<QNetworkReply> m_reply;
    QFile m_file;
    QTimer m_idle;
    QTimer m_cancelWatch;
    QTimer m_rateWindow;
    qint64 m_windowStart = 0; // bytes in the file when the current rate window began
    qint64 m_offset = 0;      // bytes asked to be skipped by the current request
    QString m_failure;        // set when we stopped the transfer
    bool m_canceled = false;
    bool m_restart = false; // the host cannot continue the part: ask for the whole file once
    bool m_restarted = false;
    int m_hops = 0;
    bool m_done = false;
};
