#include "cli/ShortenCommand.h"

#include "services/RFShortURL.h"

QString ShortenCommand::description() const
{
    return Cli::tr("Make a short link");
}

QString ShortenCommand::help() const
{
    return Cli::tr("Usage: velmora-cli shorten URL\n"
                   "\n"
                   "Prints a short link for URL from the short-link host (setting shortenerHost). A URL without\n"
                   "\"http://\" in front gets it.\n");
}

int ShortenCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    if (arguments.size() != 1) {
        ctx.err << "error: " << Cli::tr("give one link") << "\n\n" << help();
        return ExitUsage;
    }
    RFShortURL shortener;
    QString shortLink;
    QObject::connect(&shortener, &RFShortURL::receivedUrl, &shortener,
                     [&shortLink](const QString &link, const QString &) { shortLink = link.trimmed(); });
    shortener.shortURL(arguments.first());
    shortener.waitUntilDone();
    if (shortLink.isEmpty() || shortener.serverResonse < 200 || shortener.serverResonse >= 300) {
        ctx.err << "error: " << Cli::tr("the short-link host gave no short link") << '\n';
        return ExitFailure;
    }
    ctx.out << shortLink << '\n';
    return ExitSuccess;
}
