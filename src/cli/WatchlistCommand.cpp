#include "cli/WatchlistCommand.h"

#include "cli/AppLookup.h"
#include "cli/AppsOutput.h"
#include "cli/CliFeedback.h"
#include "cli/MemberSession.h"
#include "scan/VLMemberLists.h"
#include "scan/VLScanData.h"
#include "services/VLAppOnServer.h"
#include "services/VLMemberAccount.h"
#include "services/VLWatchLists.h"

#include <QRegularExpression>

namespace {

// The record APP names, or one standing for a catalogue id the store does not hold.
AppRef watchedApp(VLScanData &store, const QString &wanted, QString *problem)
{
    const AppList matches = appsNamed(store.apps().value_or(AppList()), wanted);
    if (matches.size() == 1) {
        return matches.first();
    }
    static const QRegularExpression catalogueId(QStringLiteral("^[0-9]+$"));
    if (matches.isEmpty() && catalogueId.match(wanted).hasMatch()) {
        auto app = std::make_shared<VLApp>();
        app->vlID = wanted;
        return app;
    }
    *problem = matches.isEmpty()
                   ? Cli::tr("no app %1 in the stored scan").arg(wanted)
                   : Cli::tr("%1 names %2 apps; use a catalogue id or a path").arg(wanted).arg(matches.size());
    return nullptr;
}

bool change(VLScanData &store, const QString &action, const QString &wanted, CommandContext &ctx)
{
    const bool adding = action == QLatin1String("add");
    AppRef app;
    {
        QString problem;
        VLScanData::Change lock(store);
        app = watchedApp(store, wanted, &problem);
        if (!app) {
            ctx.err << "error: " << problem << '\n';
            return false;
        }
        const QMutexLocker records(&store.mutex());
        app->listname = adding ? QStringLiteral("All") : QStringLiteral("");
        store.saveDataToDisk();
    }
    const bool sent =
        adding ? VLAppOnServer::saveToWatchListOnServer(*app) : VLAppOnServer::removeFromWatchListOnServer(*app);
    if (!sent) {
        ctx.err << "error: " << Cli::tr("the service did not change the watch list") << '\n';
    }
    return sent;
}

} // namespace

QString WatchlistCommand::description() const
{
    return Cli::tr("Show or change the member's watch list");
}

QString WatchlistCommand::help() const
{
    return Cli::tr("Usage: velmora-cli watchlist [add APP | remove APP] [--json]\n"
                   "\n"
                   "Prints the apps on the signed-in member's watch list (display name, catalogue id, installed\n"
                   "version, newest version), after adding or removing APP when asked. APP is a display name, a\n"
                   "catalogue id or the path of an installed app. The list is merged into the stored scan, as the\n"
                   "desktop program keeps it: apps that are not installed become records of their own.\n");
}

int WatchlistCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const QString action = arguments.value(0);
    const bool changing = action == QLatin1String("add") || action == QLatin1String("remove");
    if (changing ? arguments.size() != 2 : !arguments.isEmpty()) {
        ctx.err << "error: " << Cli::tr("unexpected arguments") << "\n\n" << help();
        return ExitUsage;
    }
    CliFeedback feedback(ctx.err);
    VLMemberAccount account;
    if (!MemberSession::require(account, ctx)) {
        return ExitFailure;
    }
    VLScanData store;
    if (changing && !change(store, action, arguments.at(1), ctx)) {
        return ExitFailure;
    }
    VLWatchLists lists;
    lists.getWatchlists(QStringLiteral("id=%1").arg(account.memberID));
    lists.waitUntilDone();
    if (lists.failed() || feedback.alerted()) {
        return ExitFailure;
    }
    VLMemberLists::mergeWatchListItems(store, lists.serverApps);
    AppList watched;
    for (const QVariant &entry : std::as_const(lists.serverApps)) {
        if (const AppRef app = store.appWithVLID(entry.toMap().value(QStringLiteral("vl_id")).toString())) {
            watched.append(app);
        }
    }
    printApps(watched, ctx, [](const VLApp &app) {
        return QStringList{app.displayName, app.vlID, app.localVersion, app.vlVersion};
    });
    return ExitSuccess;
}
