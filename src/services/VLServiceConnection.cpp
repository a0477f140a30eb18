#include "services/VLServiceConnection.h"

#include "platform/Log.h"
#include "platform/WebExchange.h"

#include <QEventLoop>

VLServiceConnection::VLServiceConnection(const QString &failureLine, QObject *parent)
    : QObject(parent), m_failureLine(failureLine)
{
}

VLServiceConnection::~VLServiceConnection() = default;

void VLServiceConnection::startConnection(WebRequest request)
{
    // The failure is logged with this class's own line below.
    request.logName.clear();
    m_exchange = new WebExchange(request, this);
    connect(m_exchange, &WebExchange::finished, this, [this](const WebResult &result) {
        receivedData = result.body;
        serverResonse = result.status;
        connectionDidFinishLoading();
        end();
    });
    connect(m_exchange, &WebExchange::failed, this, [this](const WebResult &result) {
        receivedData.clear();
        m_failed = true;
        vlLog(m_failureLine.contains(QLatin1String("%1")) ? m_failureLine.arg(result.errorText) : m_failureLine);
        didFailWithError();
        end();
    });
    m_exchange->start();
}

void VLServiceConnection::end()
{
    m_done = true;
    m_exchange->deleteLater();
    m_exchange = nullptr;
    emit done();
    if (m_release) {
        deleteLater();
    }
}

void VLServiceConnection::waitUntilDone()
{
    if (m_done || !m_exchange) {
        return;
    }
    QEventLoop loop;
    connect(this, &VLServiceConnection::done, &loop, &QEventLoop::quit);
    loop.exec();
}

void VLServiceConnection::releaseWhenDone()
{
    if (m_done) {
        deleteLater();
    }
    m_release = true;
}
