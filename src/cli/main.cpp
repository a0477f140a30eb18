// velmora-cli: Velmora Desktop without a display, for terminals, scripts and servers.

#include "cli/Command.h"
#include "platform/CookieFile.h"
#include "platform/Log.h"
#include "scan/VLAppDelegate.h"
#include "services/VLGoogleTracking.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <utility>

#include <malloc.h>

namespace {

bool isHelp(const QString &word)
{
    return word == QLatin1String("--help") || word == QLatin1String("-h");
}

void printUsage(QTextStream &stream, const std::vector<std::unique_ptr<Command>> &commands)
{
    stream << Cli::tr("Usage: velmora-cli [--verbose] [--json] COMMAND [ARGUMENTS]") << "\n\n"
           << Cli::tr("Velmora Desktop finds the applications on this computer and keeps them up to date.") << "\n\n"
           << Cli::tr("Commands:") << '\n';
    // One column for commands and options alike, as wide as the longest name.
    const std::pair<QString, QString> options[] = {
        {QStringLiteral("--json"), Cli::tr("print JSON on stdout (commands that list records)")},
        {QStringLiteral("--verbose"), Cli::tr("copy the program's log lines to stderr")},
        {QStringLiteral("--version"), Cli::tr("print the version")},
        {QStringLiteral("--help"), Cli::tr("print this help; velmora-cli COMMAND --help explains one command")},
    };
    qsizetype width = 0;
    for (const auto &command : commands) {
        width = std::max(width, command->name().size());
    }
    for (const auto &[name, text] : options) {
        width = std::max(width, name.size());
    }
    for (const auto &command : commands) {
        stream << "  " << command->name().leftJustified(width) << "  " << command->description() << '\n';
    }
    stream << '\n' << Cli::tr("Options:") << '\n';
    for (const auto &[name, text] : options) {
        stream << "  " << name.leftJustified(width) << "  " << text << '\n';
    }
}

} // namespace

int main(int argc, char **argv)
{
    // Buffers past 128 KB (a store's text, a reply) go straight back to the system when freed. By default the
    // allocator raises this bound to the largest such buffer freed so far and then keeps the next ones in its
    // arenas: a check of 5,000 apps peaked 1.5-3 MB higher for it, at no measurable cost in processor time.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Velmora"));
    QCoreApplication::setApplicationName(QStringLiteral("Velmora Desktop"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));

    QTextStream out(stdout);
    QTextStream err(stderr);
    CommandContext ctx{out, err};
    const auto commands = allCommands();
    const QStringList words = app.arguments().mid(1);

    // Options before the command.
    qsizetype index = 0;
    for (; index < words.size() && words.at(index).startsWith(QLatin1Char('-')); ++index) {
        const QString &word = words.at(index);
        if (isHelp(word)) {
            printUsage(out, commands);
            return ExitSuccess;
        }
        if (word == QLatin1String("--version")) {
            out << VELMORA_VERSION << '\n';
            return ExitSuccess;
        }
        if (word == QLatin1String("--verbose")) {
            ctx.verbose = true;
        } else if (word == QLatin1String("--json")) {
            ctx.json = true;
        } else {
            err << "error: " << Cli::tr("unknown option %1").arg(word) << "\n\n";
            printUsage(err, commands);
            return ExitUsage;
        }
    }
    if (index >= words.size()) {
        printUsage(err, commands);
        return ExitUsage;
    }
    QString commandName = words.at(index++);
    if (commandName == QLatin1String("help") && index < words.size()) {
        commandName = words.at(index);
        index = words.size();
        for (const auto &command : commands) {
            if (command->name() == commandName) {
                out << command->help();
                return ExitSuccess;
            }
        }
    }
    Command *command = nullptr;
    for (const auto &candidate : commands) {
        if (candidate->name() == commandName) {
            command = candidate.get();
        }
    }
    if (!command) {
        err << "error: " << Cli::tr("unknown command %1").arg(commandName) << "\n\n";
        printUsage(err, commands);
        return ExitUsage;
    }
    // --json and --verbose may stand anywhere, up to where a command starts taking its words verbatim.
    QStringList arguments;
    for (; index < words.size(); ++index) {
        if (command->takesArgumentsVerbatim(arguments)) {
            arguments += words.mid(index);
            break;
        }
        const QString &word = words.at(index);
        if (word == QLatin1String("--json")) {
            ctx.json = true;
        } else if (word == QLatin1String("--verbose")) {
            ctx.verbose = true;
        } else if (isHelp(word)) {
            out << command->help();
            return ExitSuccess;
        } else {
            arguments.append(word);
        }
    }
    installLogRouting(ctx.verbose);
    // Cookies the service and the site set (the site's sign-in among them) hold across runs.
    CookieFile::load();
    if (command->talksToService()) {
        VLAppDelegate::writeStartupSettings();
    }
    const int exitCode = command->execute(arguments, ctx);
    VLGoogleTracking::waitForPendingHits(5000);
    CookieFile::save();
    out.flush();
    err.flush();
    return exitCode;
}
