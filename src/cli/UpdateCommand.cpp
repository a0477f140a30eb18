#include "cli/UpdateCommand.h"

#include "cli/UpdateRun.h"
#include "platform/VLSettings.h"
#include "scan/OutdatedFilter.h"
#include "scan/VLScanData.h"

#include <QDir>

QString UpdateCommand::name() const
{
    return m_scope == Scope::All ? QStringLiteral("update-all") : QStringLiteral("update");
}

QString UpdateCommand::description() const
{
    return m_scope == Scope::All ? Cli::tr("Update every outdated app") : Cli::tr("Update outdated apps");
}

QString UpdateCommand::help() const
{
    const QString usage = m_scope == Scope::All
                              ? Cli::tr("Usage: velmora-cli update-all [--yes]\n"
                                        "\n"
                                        "Updates every app that \"velmora-cli list --outdated\" shows.\n")
                              : Cli::tr("Usage: velmora-cli update APP... [--yes]\n"
                                        "\n"
                                        "Updates the named outdated apps. APP is a display name, a catalogue id or the "
                                        "path of an\ninstalled app, as \"velmora-cli list --outdated\" shows them.\n");
    return usage + Cli::tr("\n"
                           "Each update downloads the newest version, checks it against the catalogue's checksum,\n"
                           "unpacks it and puts it in place of the installed copy, which is kept until the new one\n"
                           "is in place. At most three updates run at once, each with a progress bar on a terminal.\n"
                           "An app that is running is quit first and started again afterwards, when you agree:\n"
                           "  --yes  agree without asking (without a terminal and without --yes, running apps are\n"
                           "         left alone and their updates skipped)\n"
                           "Prints one line per updated app (display name, installed version, path). An update that\n"
                           "fails prints its reason on stderr; the exit status is then 1.\n");
}

int UpdateCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    QStringList names = arguments;
    const bool yes = names.removeAll(QStringLiteral("--yes")) > 0;
    const auto option = std::find_if(names.cbegin(), names.cend(),
                                     [](const QString &word) { return word.startsWith(QLatin1String("--")); });
    if (option != names.cend() || (m_scope == Scope::All) != names.isEmpty()) {
        ctx.err << "error: "
                << (option != names.cend() ? Cli::tr("unexpected argument %1").arg(*option)
                    : names.isEmpty()      ? Cli::tr("name at least one app")
                                           : Cli::tr("update-all takes no app names"))
                << "\n\n"
                << help();
        return ExitUsage;
    }
    VLScanData store;
    if (!store.apps()) {
        ctx.err << "error: " << Cli::tr("no check has been made yet; run velmora-cli check first") << '\n';
        return ExitFailure;
    }
    AppList outdated;
    {
        const QMutexLocker lock(&store.mutex());
        outdated = outdatedApps(*store.apps(), OutdatedFilterOptions::fromSettings(VLSettings()));
    }
    AppList chosen;
    for (const QString &wanted : std::as_const(names)) {
        const QString wantedPath = QDir::cleanPath(QDir::current().absoluteFilePath(wanted));
        AppList matches;
        for (const AppRef &app : std::as_const(outdated)) {
            if (app->displayName == wanted || app->vlID == wanted || app->localPath == wantedPath) {
                matches.append(app);
            }
        }
        if (matches.size() != 1) {
            ctx.err << "error: "
                    << (matches.isEmpty()
                            ? Cli::tr("no outdated app %1 in the stored scan").arg(wanted)
                            : Cli::tr("%1 names %2 apps; use a catalogue id or a path").arg(wanted).arg(matches.size()))
                    << '\n';
            return ExitFailure;
        }
        if (!chosen.contains(matches.first())) {
            chosen.append(matches.first());
        }
    }
    if (m_scope == Scope::All) {
        chosen = outdated;
    }
    if (chosen.isEmpty()) {
        ctx.err << Cli::tr("Every app is up to date.") << '\n';
        return ExitSuccess;
    }
    return UpdateRun(ctx, store, yes).run(chosen, m_scope == Scope::All);
}
