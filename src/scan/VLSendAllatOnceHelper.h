#pragma once

// One matching exchange: posts the request text to the service's "/vld603scan/automatch" and decodes the
// zlib-compressed JSON reply into the catalogue records matched to the request's apps. The driver's worker sends
// matchRequest() without blocking and hands the outcome to takeResult(); getMatches does both on the calling thread.
// Either way the end, success or failure, posts "VLUpdateDoneScannerFlag". A foreground exchange tells the user about
// a failure; a background one only logs it.

#include "platform/WebRequest.h"

#include <QCoreApplication>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <optional>

class VLSendAllatOnceHelper
{
    Q_DECLARE_TR_FUNCTIONS(VLSendAllatOnceHelper)

public:
    bool runningAsBackground = false;

    static WebRequest matchRequest(const QString &post);
    void takeResult(const WebResult &result);
    void getMatches(const QString &post);

    // The decoded reply, absent until one was decoded.
    std::optional<QVariantMap> entriesDictionary;
    // Its values, one catalogue record per matched app.
    QVariantList serverApps;
    bool doneScanning = false;

    // The diagnostic file a failed foreground exchange leaves: "VLD Scan.dvld" in the user's documents folder.
    static QString diagnosticFilePath();

private:
    void connectionDidFinishLoading(const QByteArray &receivedData);
    void connectionDidFailWithError(const QString &error);
    void saveStringToDocuments(const QString &text) const;
    void finish();
};
