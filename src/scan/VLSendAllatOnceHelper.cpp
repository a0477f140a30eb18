#include "scan/VLSendAllatOnceHelper.h"

#include "platform/Log.h"
#include "platform/RAZipper.h"
#include "platform/UserFeedback.h"
#include "platform/VLNotificationCenter.h"
#include "platform/VLSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

namespace {
constexpr int kTimeoutMs = 600 * 1000;
} // namespace

WebRequest VLSendAllatOnceHelper::matchRequest(const QString &post)
{
    const QUrl url(VLSettings().hostURL(SettingKey::serviceHost, QStringLiteral("https")) +
                   QStringLiteral("/vld603scan/automatch"));
    WebRequest request =
        WebRequest::postForm(url, post.toUtf8(), QStringLiteral("Automatch"), WebRequest::Kind::MatchReply);
    request.timeoutMs = kTimeoutMs;
    return request;
}

void VLSendAllatOnceHelper::getMatches(const QString &post)
{
    takeResult(sendWebRequest(matchRequest(post)));
}

void VLSendAllatOnceHelper::takeResult(const WebResult &result)
{
    if (result.replied()) {
        connectionDidFinishLoading(result.body);
    } else {
        connectionDidFailWithError(result.errorText);
    }
}

QString VLSendAllatOnceHelper::diagnosticFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + QStringLiteral("/VLD Scan.dvld");
}

void VLSendAllatOnceHelper::connectionDidFinishLoading(const QByteArray &receivedData)
{
    const std::optional<QByteArray> decompressed = RAZipper::dataForCompressedData(receivedData);
    QJsonParseError error{};
    const QJsonDocument reply = QJsonDocument::fromJson(decompressed.value_or(QByteArray()), &error);
    if (reply.isObject()) {
        entriesDictionary = reply.object().toVariantMap();
        serverApps = entriesDictionary->values();
    } else {
        const QString reason = decompressed ? error.errorString() : QStringLiteral("the reply is not zlib data");
        vlLog(QStringLiteral("error 1 initializting app data from server %1").arg(reason));
    }
    if (!entriesDictionary && !runningAsBackground) {
        saveStringToDocuments(QString::fromLatin1(receivedData));
        UserFeedback::current().showAlert(tr("There was an error receiving updates."),
                                          tr("Please try Check for Updates again."));
    }
    finish();
}

void VLSendAllatOnceHelper::connectionDidFailWithError(const QString &error)
{
    // The request has logged "Automatch Connection failed! Error - ..." itself.
    if (!runningAsBackground) {
        UserFeedback::current().showAlert(tr("Connection error!"), error);
    }
    finish();
}

void VLSendAllatOnceHelper::saveStringToDocuments(const QString &text) const
{
    const QString path = diagnosticFilePath();
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        vlLog(QStringLiteral("cannot write %1").arg(path));
    }
}

void VLSendAllatOnceHelper::finish()
{
    doneScanning = true;
    VLNotificationCenter::defaultCenter().post(QStringLiteral("VLUpdateDoneScannerFlag"));
}
