#include "cli/CrashReportsCommand.h"

#include "platform/CrashReportFolder.h"
#include "services/VLCrashReportSender.h"
#include "services/VLCrashReporter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <optional>

namespace {

QJsonObject reportObject(int number, const CrashReportFile &file, const QByteArray &report)
{
    using CrashReportFolder::headField;
    return {{QStringLiteral("number"), number},
            {QStringLiteral("time"), headField(report, "Time")},
            {QStringLiteral("program"), headField(report, "Program")},
            {QStringLiteral("signal"), headField(report, "Signal")},
            {QStringLiteral("sent"), file.sent},
            {QStringLiteral("path"), file.path}};
}

int list(CommandContext &ctx)
{
    const QList<CrashReportFile> reports = CrashReportFolder::reports();
    QJsonArray array;
    for (qsizetype i = 0; i < reports.size(); ++i) {
        const QJsonObject object = reportObject(int(i + 1), reports[i], CrashReportFolder::read(reports[i]));
        if (ctx.json) {
            array.append(object);
            continue;
        }
        ctx.out << object[QStringLiteral("number")].toInt() << "  " << object[QStringLiteral("time")].toString() << "  "
                << object[QStringLiteral("program")].toString() << "  " << object[QStringLiteral("signal")].toString()
                << "  " << (reports[i].sent ? Cli::tr("sent") : Cli::tr("not sent")) << '\n';
    }
    if (ctx.json) {
        ctx.out << QJsonDocument(array).toJson(QJsonDocument::Compact) << '\n';
    } else if (reports.isEmpty()) {
        ctx.err << Cli::tr("No crash reports") << '\n';
    }
    return ExitSuccess;
}

int send(const CrashReportFile &file, const QString &details, CommandContext &ctx)
{
    if (!VLCrashReporter::isActivated()) {
        ctx.err << "error: " << Cli::tr("crash reporting is turned off (QuincyActivated)") << '\n';
        return ExitFailure;
    }
    VLCrashReportSender sender;
    sender.sendCrashReport(file, details);
    sender.waitUntilDone();
    if (!sender.delivered()) {
        ctx.err << "error: "
                << (sender.failed()
                        ? Cli::tr("the crash report could not be sent")
                        : Cli::tr("the service refused the crash report (HTTP %1)").arg(sender.serverResonse))
                << '\n';
        return ExitFailure;
    }
    ctx.out << Cli::tr("Crash report sent to %1").arg(VLCrashReporter::companyName()) << '\n';
    return ExitSuccess;
}

} // namespace

QString CrashReportsCommand::description() const
{
    return Cli::tr("List, show, send or discard crash reports");
}

QString CrashReportsCommand::help() const
{
    return Cli::tr("Usage: velmora-cli crash-reports [list|show N|send N [--details TEXT]|discard N]\n"
                   "\n"
                   "When the desktop program or the daemon crashes, it leaves a crash report in the data folder\n"
                   "(a few at most, the oldest go). Nothing is sent unless you say so here, or the setting\n"
                   "QuincyAutomaticallySendCrashReports is YES; QuincyActivated NO turns crash reports off.\n"
                   "\n"
                   "  list                      the reports, newest first, numbered (the default)\n"
                   "  show N                    report N exactly as it would be sent\n"
                   "  send N [--details TEXT]   send report N to Velmora, with what you were doing\n"
                   "  discard N                 delete report N\n");
}

int CrashReportsCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    QStringList words = arguments;
    std::optional<QString> details;
    const qsizetype detailsAt = words.indexOf(QStringLiteral("--details"));
    if (detailsAt >= 0 && detailsAt + 1 < words.size()) {
        details = words.at(detailsAt + 1);
        words.remove(detailsAt, 2);
    }
    const QString verb = words.value(0, QStringLiteral("list"));
    const bool numbered = verb == u"show" || verb == u"send" || verb == u"discard";
    const bool wellFormed = numbered ? words.size() == 2 && (!details || verb == u"send")
                                     : verb == u"list" && words.size() <= 1 && !details;
    if (!wellFormed) {
        ctx.err << "error: " << Cli::tr("unexpected arguments %1").arg(arguments.join(QLatin1Char(' '))) << "\n\n"
                << help();
        return ExitUsage;
    }
    if (verb == u"list") {
        return list(ctx);
    }
    const QList<CrashReportFile> reports = CrashReportFolder::reports();
    bool isNumber = false;
    const int number = words.at(1).toInt(&isNumber);
    if (!isNumber || number < 1 || number > reports.size()) {
        ctx.err << "error: " << Cli::tr("no crash report %1").arg(words.at(1)) << '\n';
        return ExitFailure;
    }
    const CrashReportFile &file = reports.at(number - 1);
    if (verb == u"show") {
        ctx.out << CrashReportFolder::read(file);
        return ExitSuccess;
    }
    if (verb == u"send") {
        return send(file, details.value_or(QString()), ctx);
    }
    if (!CrashReportFolder::discard(file)) {
        ctx.err << "error: " << Cli::tr("cannot delete %1").arg(file.path) << '\n';
        return ExitFailure;
    }
    return ExitSuccess;
}
