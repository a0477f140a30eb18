#include "catalogue/CatalogueFile.h"
#include "commands/Commands.h"
#include "commands/Options.h"
#include "http/HttpServer.h"

#include <cstdio>
#include <thread>

int serveCommand(const QStringList &args)
{
    QCommandLineParser parser;
    Options::addCommon(parser);
    parser.addOption(
        {QStringLiteral("listen"),
         QStringLiteral("Address to listen on, HOST:PORT; port 0 takes a free port (default 127.0.0.1:8642)."),
         QStringLiteral("ADDRESS"), QStringLiteral("127.0.0.1:8642")});
    parser.addOption({QStringLiteral("files"), QStringLiteral("Folder served under /files/."), QStringLiteral("DIR"),
                      Options::defaultFilesDir()});
    parser.addOption({QStringLiteral("no-sample"), QStringLiteral("Start with an empty catalogue.")});
    ServerLimits limits;
    limits.workers = int(std::max(16u, 4 * std::thread::hardware_concurrency()));
    parser.addOption(
        {QStringLiteral("connections"),
         QStringLiteral("Connections served at once; more wait to be accepted (default %1).").arg(limits.connections),
         QStringLiteral("N"), QString::number(limits.connections)});
    parser.addOption({QStringLiteral("workers"),
                      QStringLiteral("Threads answering complete requests (default %1).").arg(limits.workers),
                      QStringLiteral("N"), QString::number(limits.workers)});
    if (!Options::parse(parser, args) || !parser.positionalArguments().isEmpty())
        return Options::usageError(parser);
    const auto address = ListenAddress::parse(parser.value(QStringLiteral("listen")));
    if (!address) {
        std::fprintf(stderr, "error: --listen wants HOST:PORT\n");
        return Options::usageError(parser);
    }
    bool connectionsOk = false, workersOk = false;
    limits.connections = parser.value(QStringLiteral("connections")).toInt(&connectionsOk);
    limits.workers = parser.value(QStringLiteral("workers")).toInt(&workersOk);
    if (!connectionsOk || !workersOk || limits.connections < 1 || limits.workers < 1) {
        std::fprintf(stderr, "error: --connections and --workers want a positive number\n");
        return Options::usageError(parser);
    }
    auto storage = Options::openStorage(parser);
    auto secrets = Options::openSecrets(parser);
    if (!storage || !secrets)
        return 1;
    // A fresh database starts with the bundled sample, so a first start can check and update at once.
    if (storage->catalogue->apps().isEmpty() && !parser.isSet(QStringLiteral("no-sample"))) {
        const ImportSummary summary = CatalogueFile::importFile(*storage->catalogue, Options::sampleCataloguePath());
        if (!summary.error.isEmpty())
            std::fprintf(stderr, "warning: sample catalogue not loaded: %s\n", qUtf8Printable(summary.error));
    }
    CatalogueCache catalogue(*storage->catalogue, parser.value(QStringLiteral("files")));
    ServiceContext context{*storage, catalogue, *secrets, parser.value(QStringLiteral("files"))};
    return HttpServer::run(context, *address, limits);
}
