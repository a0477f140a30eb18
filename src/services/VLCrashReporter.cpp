#include "services/VLCrashReporter.h"

#include "platform/CrashHandler.h"
#include "platform/Log.h"
#include "platform/VLSettings.h"
#include "services/CrashReportAsker.h"
#include "services/VLCrashReportSender.h"

#include <QTimer>

bool VLCrashReporter::isActivated()
{
    const VLSettings settings;
    return !settings.contains(QString::fromLatin1(SettingKey::QuincyActivated)) ||
           settings.boolValue(SettingKey::QuincyActivated);
}

bool VLCrashReporter::sendsAutomatically()
{
    return VLSettings().boolValue(SettingKey::QuincyAutomaticallySendCrashReports);
}

VLCrashReporter::VLCrashReporter(const QString &program, CrashReportAsker *asker, QObject *parent)
    : QObject(parent), m_program(program), m_asker(asker)
{
}

VLCrashReporter::~VLCrashReporter() = default;

void VLCrashReporter::startCrashReporting()
{
    if (!isActivated()) {
        QTimer::singleShot(0, this, &VLCrashReporter::finished);
        return;
    }
    for (const CrashReportFile &file : CrashReportFolder::reports()) {
        if (!file.sent) {
            m_unsent.append(file);
        }
    }
    m_handler = std::make_unique<CrashHandler>(m_program);
    QTimer::singleShot(0, this, &VLCrashReporter::dealWithNext);
}

void VLCrashReporter::dealWithNext()
{
    if (m_unsent.isEmpty()) {
        emit finished();
        return;
    }
    const CrashReportFile file = m_unsent.takeFirst();
    if (sendsAutomatically()) {
        send(file, {});
        return;
    }
    if (!m_asker) {
        vlLog(QStringLiteral("crash report waiting for the user's word: %1").arg(file.path));
        emit reportWaiting(file.path);
        dealWithNext();
        return;
    }
    const QByteArray report = CrashReportFolder::read(file);
    const QString program = CrashReportFolder::headField(report, "Program").section(QLatin1Char(' '), 0, 0);
    const CrashReportQuestion question{
        tr("%1 quit unexpectedly").arg(program),
        tr("%1 crashed the last time it ran. You can send the report below to %2 to help find the cause, and add what "
           "you were doing. Nothing is sent without your word.")
            .arg(program, companyName()),
        report};
    m_asker->askToSendCrashReport(question, [this, file](std::optional<QString> details) {
        if (details) {
            send(file, *details);
            return;
        }
        CrashReportFolder::discard(file);
        dealWithNext();
    });
}

void VLCrashReporter::send(const CrashReportFile &file, const QString &details)
{
    auto *sender = new VLCrashReportSender(this);
    connect(sender, &VLCrashReportSender::done, this, [this, sender] {
        sender->deleteLater();
        dealWithNext();
    });
    sender->sendCrashReport(file, details);
}
