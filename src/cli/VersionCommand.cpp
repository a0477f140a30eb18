#include "cli/VersionCommand.h"

#include "model/VersionRules.h"

namespace {
struct Action
{
    const char *name;
    int argumentCount;
};
constexpr Action kActions[] = {{"clean", 1}, {"compare", 2}, {"outdated", 2}};

const Action *findAction(const QString &name)
{
    for (const Action &action : kActions) {
        if (name == QLatin1String(action.name)) {
            return &action;
        }
    }
    return nullptr;
}
} // namespace

QString VersionCommand::description() const
{
    return Cli::tr("Clean and compare version texts");
}

QString VersionCommand::help() const
{
    return Cli::tr("Usage: velmora-cli version clean TEXT\n"
                   "       velmora-cli version compare A B\n"
                   "       velmora-cli version outdated LOCAL REMOTE\n"
                   "\n"
                   "clean     prints the version found in TEXT (\"Version 2.1 (Build 4)\" gives 2.1)\n"
                   "compare   prints 0 when A is newer, 1 when A is older, 2 when they are the same\n"
                   "outdated  prints true when the installed LOCAL is older than the catalogue's REMOTE\n"
                   "\n"
                   "Every word after clean, compare or outdated is taken as it is, even one that\n"
                   "starts with \"-\"; quote texts with blanks.\n");
}

bool VersionCommand::takesArgumentsVerbatim(const QStringList &arguments) const
{
    return !arguments.isEmpty() && findAction(arguments.first());
}

int VersionCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const Action *action = arguments.isEmpty() ? nullptr : findAction(arguments.first());
    if (!action || arguments.size() != action->argumentCount + 1) {
        ctx.err << "error: " << Cli::tr("version needs clean TEXT, compare A B or outdated LOCAL REMOTE") << "\n\n"
                << help();
        return ExitUsage;
    }
    const QString &a = arguments.at(1);
    if (qstrcmp(action->name, "clean") == 0) {
        ctx.out << cleanVersionString(a) << '\n';
    } else if (qstrcmp(action->name, "compare") == 0) {
        ctx.out << unsigned(compareVersionString(a, arguments.at(2))) << '\n';
    } else {
        ctx.out << (isLocalVersionOutdatedByRemoteVersion(a, arguments.at(2)) ? "true" : "false") << '\n';
    }
    return ExitSuccess;
}
