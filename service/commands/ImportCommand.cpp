#include "catalogue/CatalogueFile.h"
#include "commands/Commands.h"
#include "commands/Options.h"

#include <cstdio>

int importCommand(const QStringList &args)
{
    QCommandLineParser parser;
    Options::addCommon(parser);
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("JSON files of catalogue records."));
    if (!Options::parse(parser, args) || parser.positionalArguments().isEmpty())
        return Options::usageError(parser);
    auto storage = Options::openStorage(parser);
    if (!storage)
        return 1;
    for (const QString &path : parser.positionalArguments()) {
        const ImportSummary summary = CatalogueFile::importFile(*storage->catalogue, path);
        if (!summary.error.isEmpty()) {
            std::fprintf(stderr, "error: %s: %s\n", qUtf8Printable(path), qUtf8Printable(summary.error));
            return 1;
        }
        std::printf("%s: %d added, %d changed, %d unchanged\n", qUtf8Printable(path), summary.added, summary.changed,
                    summary.unchanged);
    }
    return 0;
}
