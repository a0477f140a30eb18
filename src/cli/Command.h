#pragma once

// One velmora-cli command: its name, a one-line description, and execute() over the words after its name.
// Commands write their output to ctx.out only (pure JSON with --json) and messages to ctx.err.

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

#include <memory>
#include <vector>

struct CommandContext
{
    QTextStream &out;
    QTextStream &err;
    bool json = false;    // --json was given anywhere on the line
    bool verbose = false; // --verbose was given anywhere on the line
};

// velmora-cli's user-visible texts share one translation context, with the English text as the key. They are
// written Cli::tr("...") so that lupdate finds each one under that context.
class Cli
{
    Q_DECLARE_TR_FUNCTIONS(Cli)
};

enum ExitCode { ExitSuccess = 0, ExitFailure = 1, ExitUsage = 2 };

class Command
{
public:
    virtual ~Command() = default;
    virtual QString name() const = 0;
    virtual QString description() const = 0;
    // Full help text for "velmora-cli NAME --help".
    virtual QString help() const = 0;
    // arguments: the words after the command name, with --json and --verbose already taken out
    // (except for commands that take their arguments verbatim, see takesArgumentsVerbatim).
    virtual int execute(const QStringList &arguments, CommandContext &ctx) = 0;
    // True for commands whose arguments must not be read as options at all.
    virtual bool takesArgumentsVerbatim(const QStringList &arguments) const
    {
        Q_UNUSED(arguments);
        return false;
    }
    // False for commands that never reach a host; the others write the start settings first ("serial", "penguin").
    virtual bool talksToService() const { return true; }
};

// Every command, in the order "velmora-cli --help" lists them. Defined in Commands.cpp.
std::vector<std::unique_ptr<Command>> allCommands();
