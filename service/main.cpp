// velmora-service: the web service Velmora Desktop talks to.

#include "commands/Commands.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

int usage(FILE *out)
{
    std::fputs("usage: velmora-service COMMAND [OPTIONS]\n\ncommands:\n", out);
    for (const Command &command : commands)
        std::fprintf(out, "  %-12s %s\n", command.name, command.summary);
    std::fputs("\nEvery command takes --db LOCATION and --key-file PATH; --help shows a command's options.\n", out);
    return out == stdout ? 0 : 2;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velmora-service"));
    const QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty())
        return usage(stderr);
    if (args.first() == QLatin1StringView("--help") || args.first() == QLatin1StringView("help"))
        return usage(stdout);
    for (const Command &command : commands) {
        if (args.first() == QLatin1StringView(command.name))
            return command.run(args);
    }
    std::fprintf(stderr, "error: unknown command %s\n", qUtf8Printable(args.first()));
    return usage(stderr);
}
