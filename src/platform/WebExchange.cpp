#include "platform/WebExchange.h"

#include "platform/Log.h"

#include <QNetworkReply>

WebExchange::WebExchange(const WebRequest &request, QObject *parent) : QObject(parent), m_request(request)
{
    const auto timeUp = [this] { giveUp(QStringLiteral("The request timed out."), true); };
    for (QTimer *timer : {&m_idle, &m_deadline}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, timeUp);
    }
    m_idle.setInterval(request.timeoutMs);
    m_deadline.setInterval(request.deadlineMs);
    m_cancelWatch.setInterval(50);
    connect(&m_cancelWatch, &QTimer::timeout, this, [this] {
        if (m_request.cancel->load()) {
            abort();
        }
    });
}

WebExchange::~WebExchange()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
    }
}

void WebExchange::start()
{
    QNetworkRequest request = HttpSession::request(m_request.url, m_request.headers, m_request.followRedirects);
    // The body cap counts the decoded bytes; Qt's own ratio check would also refuse a large list that compresses well.
    request.setDecompressedSafetyCheckThreshold(-1);
    m_reply.reset(HttpSession::current().send(request, m_request.method, m_request.body));
    m_reply->setReadBufferSize(HttpSession::kReadBufferBytes);
    const auto moved = [this] { m_idle.start(); };
    connect(m_reply.get(), &QNetworkReply::readyRead, this, &WebExchange::readBody);
    connect(m_reply.get(), &QNetworkReply::uploadProgress, this, moved);
    connect(m_reply.get(), &QNetworkReply::finished, this, &WebExchange::complete);
    m_idle.start();
    if (m_request.deadlineMs > 0) {
        m_deadline.start();
    }
    if (m_request.cancel) {
        m_cancelWatch.start();
    }
}

void WebExchange::abort()
{
    m_quiet = true;
    giveUp(QStringLiteral("The request was canceled."), false);
}

void WebExchange::readBody()
{
    m_idle.start();
    // Read no more than one byte past the cap, so a flood never sits in memory whole.
    const qint64 room =
        m_request.maxBodyBytes > 0 ? m_request.maxBodyBytes - m_result.body.size() + 1 : m_reply->bytesAvailable();
    m_result.body += m_reply->read(std::min(room, m_reply->bytesAvailable()));
    if (m_request.maxBodyBytes > 0 && m_result.body.size() > m_request.maxBodyBytes) {
        giveUp(QStringLiteral("The reply is larger than %1 bytes.").arg(m_request.maxBodyBytes), false);
    }
}

void WebExchange::giveUp(const QString &reason, bool timedOut)
{
    if (m_done || !m_reply) {
        return;
    }
    m_failure = reason;
    m_result.timedOut = timedOut;
    m_reply->abort(); // finishes the reply, and with it the exchange
}

void WebExchange::complete()
{
    if (m_done) {
        return;
    }
    if (m_failure.isEmpty()) {
        readBody();
    }
    m_done = true;
    m_idle.stop();
    m_deadline.stop();
    m_cancelWatch.stop();

    m_result.finalUrl = m_reply->url();
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_failure.isEmpty() && status != 0 && !HttpSession::transferFailed(*m_reply)) {
        m_result.status = status;
        m_result.headers = m_reply->rawHeaderPairs();
        emit finished(m_result);
        return;
    }
    m_result.status = 0;
    m_result.body.clear();
    m_result.errorText = redactSecrets(m_failure.isEmpty() ? m_reply->errorString() : m_failure);
    if (!m_quiet && !m_request.logName.isEmpty()) {
        vlLog(QStringLiteral("%1 Connection failed! Error - %2").arg(m_request.logName, m_result.errorText));
    }
    emit failed(m_result);
}
