#include "cli/ReportCommand.h"

#include "cli/AppLookup.h"
#include "cli/CliFeedback.h"
#include "cli/MemberSession.h"
#include "scan/VLScanData.h"
#include "services/VLGoogleTracking.h"
#include "services/VLMemberAccount.h"
#include "services/VLReportProblemSender.h"

QString ReportCommand::description() const
{
    return Cli::tr("Report a problem with an app");
}

QString ReportCommand::help() const
{
    return Cli::tr("Usage: velmora-cli report APP --text TEXT\n"
                   "\n"
                   "Sends TEXT to the Velmora service as a problem report about APP (a display name, a catalogue id\n"
                   "or the path of an installed app of the stored scan), with the app's versions and path, and the\n"
                   "member id when signed in.\n");
}

int ReportCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const qsizetype textAt = arguments.indexOf(QStringLiteral("--text"));
    QStringList words = arguments;
    QString text;
    if (textAt >= 0 && textAt + 1 < words.size()) {
        text = words.at(textAt + 1);
        words.remove(textAt, 2);
    }
    if (words.size() != 1 || text.isEmpty()) {
        ctx.err << "error: " << Cli::tr("name one app and give the report's text") << "\n\n" << help();
        return ExitUsage;
    }
    const VLScanData store;
    const AppList matches = appsNamed(store.apps().value_or(AppList()), words.first());
    if (matches.size() != 1) {
        ctx.err << "error: " << Cli::tr("no single app %1 in the stored scan").arg(words.first()) << '\n';
        return ExitFailure;
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    const int member = MemberSession::restore(account) ? account.memberID : 0;
    VLGoogleTracking::trackProgramEvent(QStringLiteral("REPORT_PROBLEM"));
    VLReportProblemSender sender;
    sender.reportIssue(text, *matches.first(), member);
    sender.waitUntilDone();
    if (sender.serverResonse < 200 || sender.serverResonse >= 300) {
        ctx.err << "error: " << Cli::tr("the service did not take the report") << '\n';
        return ExitFailure;
    }
    ctx.out << Cli::tr("Report sent") << '\n';
    return ExitSuccess;
}
