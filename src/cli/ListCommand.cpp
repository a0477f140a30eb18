#include "cli/ListCommand.h"

#include "cli/AppsOutput.h"
#include "cli/StoreDamageNotice.h"
#include "platform/VLSettings.h"
#include "scan/OutdatedFilter.h"
#include "scan/VLScanData.h"

QString ListCommand::description() const
{
    return Cli::tr("Print the applications of the last scan");
}

QString ListCommand::help() const
{
    return Cli::tr("Usage: velmora-cli list [--outdated | --installed | --all] [--json]\n"
                   "\n"
                   "Prints the records of the stored scan in stored order, one line each: display name, installed\n"
                   "version, newest version and path, separated by tabs (\"-\" where nothing is known).\n"
                   "  --all        every record, including purchases and deals that are not installed (the default)\n"
                   "  --installed  the records of applications installed on this computer\n"
                   "  --outdated   the installed applications with an update, as the update list shows them (the\n"
                   "               settings showMAS, showBeta, showPaidUpgrades and showNewerOS apply)\n"
                   "With --json, prints a JSON array with one object per record, with every field.\n");
}

int ListCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    QString filter;
    for (const QString &argument : arguments) {
        const bool known = argument == QLatin1String("--outdated") || argument == QLatin1String("--installed") ||
                           argument == QLatin1String("--all");
        if (!known || (!filter.isEmpty() && filter != argument)) {
            ctx.err << "error: "
                    << (known ? Cli::tr("choose one of --outdated, --installed and --all")
                              : Cli::tr("unexpected argument %1").arg(argument))
                    << "\n\n"
                    << help();
            return ExitUsage;
        }
        filter = argument;
    }

    VLScanData store;
    reportStoreDamage(store, ctx.err);
    if (!store.apps()) {
        ctx.err << "notice: " << Cli::tr("no check has been made yet; run velmora-cli check") << '\n';
    }
    const AppList apps = store.apps().value_or(AppList());
    AppList listed;
    if (filter == QLatin1String("--outdated")) {
        listed = outdatedApps(apps, OutdatedFilterOptions::fromSettings(VLSettings()));
    } else if (filter == QLatin1String("--installed")) {
        for (const AppRef &app : apps) {
            if (app->isInstalled()) {
                listed.append(app);
            }
        }
    } else {
        listed = apps;
    }

    printApps(listed, ctx, [](const VLApp &app) {
        return QStringList{app.displayName, app.localVersion, app.vlVersion, app.localPath};
    });
    return ExitSuccess;
}
