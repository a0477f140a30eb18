#include "platform/HttpDownload.h"

#include "platform/Log.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QNetworkReply>
#include <QRegularExpression>

namespace {

// The reply's own name for the file (Content-Disposition), else the last segment of its address; never a path.
QString suggestedFileName(const QNetworkReply &reply)
{
    static const QRegularExpression filename(QStringLiteral(R"re(filename\s*=\s*(?:"([^"]*)"|([^;\s]+)))re"),
                                             QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = filename.match(QString::fromUtf8(reply.rawHeader("Content-Disposition")));
    QString name =
        match.hasMatch() ? QString(match.captured(1) + match.captured(2)) : reply.url().fileName(QUrl::FullyDecoded);
    name = name.mid(std::max(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\'))) + 1);
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ? QStringLiteral("download")
                                                                                       : name;
}

struct ContentRange
{
    qint64 first = -1;
    qint64 last = -1;
    qint64 total = -1; // -1 for "*"
};

// "bytes FIRST-LAST/TOTAL"; first -1 when the header is missing or malformed.
ContentRange contentRange(const QByteArray &header)
{
    static const QRegularExpression range(QStringLiteral(R"(^\s*bytes\s+(\d+)-(\d+)/(\d+|\*)\s*$)"),
                                          QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = range.match(QString::fromLatin1(header));
    if (!match.hasMatch()) {
        return {};
    }
    bool known = false;
    const qint64 total = match.captured(3).toLongLong(&known);
    return {match.captured(1).toLongLong(), match.captured(2).toLongLong(), known ? total : -1};
}

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

} // namespace

HttpDownload::HttpDownload(const DownloadRequest &request, QObject *parent) : QObject(parent), m_request(request)
{
    m_idle.setSingleShot(true);
    m_idle.setInterval(request.timeoutMs);
    connect(&m_idle, &QTimer::timeout, this, [this] { stop(QStringLiteral("The request timed out."), true); });
    if (request.rateWindowMs > 0 && request.minBytesPerSecond > 0) {
        m_rateWindow.setInterval(request.rateWindowMs);
        connect(&m_rateWindow, &QTimer::timeout, this, &HttpDownload::checkRate);
    }
    m_cancelWatch.setInterval(50);
    connect(&m_cancelWatch, &QTimer::timeout, this, [this] {
        if (!m_canceled && m_request.cancel->load()) {
            cancel();
        }
    });
}

HttpDownload::~HttpDownload()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

void HttpDownload::start()
{
    qint64 offset = 0;
    if (!m_request.fileName.isEmpty()) {
        m_result.filePath = QDir(m_request.folder).filePath(m_request.fileName);
        const QFileInfo part(m_result.filePath);
        if (m_request.resume && part.isFile() && !part.isSymLink()) {
            offset = part.size();
        }
    }
    if (m_request.cancel) {
        m_cancelWatch.start();
    }
    m_windowStart = offset;
    if (m_rateWindow.interval() > 0) {
        m_rateWindow.start();
    }
    send(offset);
}

DownloadResult HttpDownload::run()
{
    QEventLoop loop;
    connect(this, &HttpDownload::done, &loop, &QEventLoop::quit);
    start();
    if (!m_done) {
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return m_result;
}

void HttpDownload::cancel()
{
    m_canceled = true;
    // Later, from the event loop: a receiver of responded or progress may cancel while the reply is still talking.
    QTimer::singleShot(0, this, [this] { stop(QStringLiteral("The download was canceled."), false); });
}

void HttpDownload::send(qint64 offset)
{
    m_offset = offset;
    HttpHeaders headers = m_request.headers;
    headers.append({QByteArrayLiteral("Accept-Encoding"), QByteArrayLiteral("identity")});
    if (offset > 0) {
        headers.append({QByteArrayLiteral("Range"), "bytes=" + QByteArray::number(offset) + '-'});
    }
    if (m_reply) {
        m_reply.release()->deleteLater(); // a restart comes from within that reply's own signal
    }
    const bool followRedirects = !m_request.onRedirect;
    m_reply.reset(HttpSession::current().send(HttpSession::request(m_request.url, headers, followRedirects), "GET"));
    m_reply->setReadBufferSize(HttpSession::kReadBufferBytes);
    connect(m_reply.get(), &QNetworkReply::readyRead, this, &HttpDownload::writeData);
    connect(m_reply.get(), &QNetworkReply::finished, this, &HttpDownload::replyFinished);
    m_idle.start();
}

// Decides, on the first bytes of a response, whether they are the file and where they go. False: they are not
// written (an error page, a cancel, a restart under way, a file that cannot be opened).
bool HttpDownload::beginFile()
{
    if (m_canceled) {
        return false;
    }
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    m_result.status = status;
    m_result.finalUrl = m_reply->url();
    m_result.mimeType = m_reply->rawHeader("Content-Type").split(';').constFirst().trimmed().toLower();
    if (!isSuccess(status)) {
        return false;
    }
    const QVariant lengthHeader = m_reply->header(QNetworkRequest::ContentLengthHeader);
    const qint64 length = lengthHeader.isValid() ? lengthHeader.toLongLong() : -1;
    const bool continues = status == 206 && m_offset > 0;
    if (continues) {
        if (!continuesPart(length)) {
            // Some other piece of the file: only the whole file can be trusted now.
            m_restart = true;
            m_reply->abort();
            return false;
        }
    } else {
        m_result.expected = length;
    }
    m_result.resumed = continues;
    m_result.received = continues ? m_offset : 0;
    if (m_request.fileName.isEmpty()) {
        m_result.filePath = QDir(m_request.folder).filePath(suggestedFileName(*m_reply));
    }
    if (m_request.maxBytes >= 0 && m_result.expected > m_request.maxBytes) {
        m_result.overLimit = true;
        stop(QStringLiteral("The file is larger than %1 bytes").arg(m_request.maxBytes), false);
        return false;
    }
    emit responded(m_result);
    if (m_canceled) {
        return false;
    }
    // The folder is private to this user; a link in it was still not made by us, and is never written through.
    if (!QDir().mkpath(m_request.folder) || QFileInfo(m_result.filePath).isSymLink()) {
        stop(QStringLiteral("Cannot write %1").arg(m_result.filePath), false);
        return false;
    }
    m_file.setFileName(m_result.filePath);
    if (!m_file.open(continues ? QIODevice::WriteOnly | QIODevice::Append
                               : QIODevice::WriteOnly | QIODevice::Truncate)) {
        stop(m_file.errorString(), false);
        return false;
    }
    return true;
}

void HttpDownload::writeData()
{
    m_idle.start();
    QNetworkReply *reply = m_reply.get(); // beginFile may already have started the next request
    if (!m_file.isOpen() && !beginFile()) {
        if (reply->isOpen()) {
            reply->readAll(); // not the file: nothing is kept
        }
        return;
    }
    const QByteArray chunk = reply->readAll();
    if (chunk.isEmpty()) {
        return;
    }
    if (m_request.maxBytes >= 0 && m_result.received + chunk.size() > m_request.maxBytes) {
        m_result.overLimit = true;
        stop(QStringLiteral("The file is larger than %1 bytes").arg(m_request.maxBytes), false);
        return;
    }
    // Flushed with every piece, so a part left by a crash or a cancel is what arrived, for the next try to resume.
    if (m_file.write(chunk) != chunk.size() || !m_file.flush()) {
        stop(m_file.errorString(), false);
        return;
    }
    m_result.received += chunk.size();
    emit progress(m_result.received, m_result.expected);
}

void HttpDownload::stop(const QString &reason, bool timedOut)
{
    if (m_done || !m_reply) {
        return;
    }
    if (m_failure.isEmpty()) {
        m_failure = reason;
        m_result.timedOut = timedOut;
    }
    m_reply->abort(); // finishes the reply, and with it the download
}

void HttpDownload::replyFinished()
{
    if (m_done) {
        return;
    }
    QNetworkReply *reply = m_reply.get();
    const bool broke = HttpSession::transferFailed(*reply);
    if (m_failure.isEmpty() && !m_canceled && (m_file.isOpen() || !broke)) {
        writeData(); // what is left; an empty file has no readyRead, and is begun here
    }
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (!broke && !m_canceled && m_failure.isEmpty() && followRedirect(*reply)) {
        return;
    }
    const bool cannotContinue = m_restart || (status == 416 && m_offset > 0);
    if (cannotContinue && !m_restarted && !m_canceled && m_failure.isEmpty()) {
        m_restart = false;
        m_restarted = true;
        send(0);
        return;
    }
    m_file.close();
    m_result.status = status;
    m_result.finalUrl = reply->url();
    if (m_canceled) {
        finish(DownloadResult::Outcome::Canceled, QStringLiteral("The download was canceled."));
    } else if (!m_failure.isEmpty() || broke || status == 0) {
        const QString reason = m_failure.isEmpty() ? reply->errorString() : m_failure;
        if (!m_request.logName.isEmpty()) {
            vlLog(QStringLiteral("%1 Connection failed! Error - %2").arg(m_request.logName, redactSecrets(reason)));
        }
        finish(DownloadResult::Outcome::Failed, reason);
    } else if (!isSuccess(status)) {
        // A refused hop from https to http says so; any other status is the host's answer.
        finish(DownloadResult::Outcome::Failed, reply->error() == QNetworkReply::InsecureRedirectError
                                                    ? reply->errorString()
                                                    : QStringLiteral("HTTP %1").arg(status));
    } else if (m_result.expected >= 0 && m_result.received != m_result.expected) {
        // The connection closed before the announced length, without an error from the transfer: a broken one.
        const QString reason =
            QStringLiteral("The transfer ended after %1 of %2 bytes").arg(m_result.received).arg(m_result.expected);
        if (!m_request.logName.isEmpty()) {
            vlLog(QStringLiteral("%1 Connection failed! Error - %2").arg(m_request.logName, reason));
        }
        finish(DownloadResult::Outcome::Failed, reason);
    } else {
        finish(DownloadResult::Outcome::Finished, QString());
    }
}

bool HttpDownload::continuesPart(qint64 length)
{
    const ContentRange range = contentRange(m_reply->rawHeader("Content-Range"));
    const bool fromPart = range.first == m_offset && range.last >= range.first;
    const bool lengthAgrees = length < 0 || length == range.last - range.first + 1;
    const bool withinTotal = range.total < 0 || range.last < range.total;
    if (!fromPart || !lengthAgrees || !withinTotal) {
        return false;
    }
    m_result.expected = range.total >= 0 ? range.total : range.last + 1;
    return true;
}

void HttpDownload::checkRate()
{
    const qint64 least = m_request.minBytesPerSecond * m_request.rateWindowMs / 1000;
    if (m_result.received - m_windowStart < least) {
        stop(QStringLiteral("Fewer than %1 bytes per second arrived").arg(m_request.minBytesPerSecond), true);
    }
    m_windowStart = m_result.received;
}

bool HttpDownload::followRedirect(QNetworkReply &reply)
{
    constexpr int kMaxHops = 20;
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QUrl location = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (!m_request.onRedirect || status < 300 || status > 399 || !location.isValid() || m_hops >= kMaxHops) {
        return false;
    }
    const QUrl next = reply.url().resolved(location);
    if (reply.url().scheme() == QLatin1String("https") && next.scheme() != QLatin1String("https")) {
        m_failure = QStringLiteral("Refused a redirect from https to %1").arg(next.scheme());
        return false;
    }
    ++m_hops;
    m_request.onRedirect(next, m_request.headers);
    m_request.url = next;
    send(m_offset);
    return true;
}

void HttpDownload::finish(DownloadResult::Outcome outcome, const QString &errorText)
{
    m_done = true;
    m_idle.stop();
    m_cancelWatch.stop();
    m_rateWindow.stop();
    m_result.outcome = outcome;
    m_result.errorText = redactSecrets(errorText);
    emit done(m_result);
}
