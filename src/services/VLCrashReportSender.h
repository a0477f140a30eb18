#pragma once

// Posts one crash report to the service host's "/quincy/crash_v300.php": the report as written, the user's details,
// the version and the installation id ("penguin"). A report the service took (200) is marked sent.

#include "platform/CrashReportFolder.h"
#include "services/VLFormSender.h"

class VLCrashReportSender : public VLFormSender
{
    Q_OBJECT

public:
    explicit VLCrashReportSender(QObject *parent = nullptr);
    void sendCrashReport(const CrashReportFile &file, const QString &details);
    // The service took the report.
    bool delivered() const { return isDone() && !failed() && serverResonse == 200; }

    static QByteArray crashReportBody(const QByteArray &report, const QString &details);

protected:
    void connectionDidFinishLoading() override;

private:
    CrashReportFile m_file;
};
