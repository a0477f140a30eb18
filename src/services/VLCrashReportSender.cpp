#include "services/VLCrashReportSender.h"

#include "platform/Log.h"
#include "platform/VLSettings.h"

VLCrashReportSender::VLCrashReportSender(QObject *parent)
    : VLFormSender(QStringLiteral("Crash report connection failed! Error - %1"), parent)
{
}

QByteArray VLCrashReportSender::crashReportBody(const QByteArray &report, const QString &details)
{
    // Every field percent-encoded whole, so the report arrives byte for byte.
    const auto field = [](const char *name, const QByteArray &value) -> QByteArray {
        return QByteArray(name) + '=' + value.toPercentEncoding();
    };
    return field("report", report) + '&' + field("details", details.toUtf8()) + '&' +
           field("version", QByteArrayLiteral(VELMORA_VERSION)) + '&' +
           field("penguin", VLSettings().stringValue(SettingKey::penguin).toUtf8());
}

void VLCrashReportSender::sendCrashReport(const CrashReportFile &file, const QString &details)
{
    m_file = file;
    postForm(SettingKey::serviceHost, QStringLiteral("https"), QStringLiteral("/quincy/crash_v300.php"),
             QString::fromLatin1(crashReportBody(CrashReportFolder::read(file), details)), 30);
}

void VLCrashReportSender::connectionDidFinishLoading()
{
    if (serverResonse != 200) {
        vlLog(QStringLiteral("crash report refused by the service: %1 %2")
                  .arg(serverResonse)
                  .arg(QString::fromUtf8(receivedData.left(200))));
    } else if (!CrashReportFolder::markSent(m_file)) {
        vlLog(QStringLiteral("cannot mark the crash report %1 sent").arg(m_file.path));
    }
}
