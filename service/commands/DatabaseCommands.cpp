// Commands that look after the database itself: bring its tables to this program's version, or copy it whole to
// another database (from the embedded SQLite file to a PostgreSQL server, say).

#include "commands/Commands.h"
#include "commands/Options.h"
#include "storage/DatabaseCopy.h"
#include "storage/Schema.h"

#include <cstdio>

namespace {

int fail(const QString &error)
{
    std::fprintf(stderr, "error: %s\n", qUtf8Printable(error));
    return 1;
}

} // namespace

int migrateCommand(const QStringList &args)
{
    QCommandLineParser parser;
    Options::addCommon(parser);
    if (!Options::parse(parser, args) || !parser.positionalArguments().isEmpty())
        return Options::usageError(parser);
    auto db = Options::openDatabase(parser, Options::databasePath(parser));
    if (!db)
        return 1;
    const int before = Schema::version(*db);
    QString error;
    if (!Schema::migrate(*db, &error))
        return fail(error);
    std::printf("schema version %d (was %d)\n", Schema::programVersion(), std::max(before, 0));
    return 0;
}

int copyCommand(const QStringList &args)
{
    QCommandLineParser parser;
    const QString from = QStringLiteral("from"), to = QStringLiteral("to");
    parser.addOption({from, QStringLiteral("The database to copy (as --db takes it)."), QStringLiteral("LOCATION")});
    parser.addOption(
        {to, QStringLiteral("The database to copy into; it must hold no rows yet."), QStringLiteral("LOCATION")});
    Options::addDatabaseWait(parser);
    parser.addHelpOption();
    if (!Options::parse(parser, args) || !parser.positionalArguments().isEmpty() || !parser.isSet(from) ||
        !parser.isSet(to))
        return Options::usageError(parser);
    auto source = Options::openDatabase(parser, parser.value(from));
    auto target = source ? Options::openDatabase(parser, parser.value(to)) : nullptr;
    if (!target)
        return 1;
    QString error;
    if (!Schema::ensureCurrent(*source, parser.value(from), &error) ||
        !Schema::ensureCurrent(*target, parser.value(to), &error))
        return fail(error);
    QList<QPair<QString, qint64>> counts;
    if (!copyDatabase(*source, *target, &counts, &error))
        return fail(error);
    for (const auto &[table, rows] : counts)
        std::printf("%s: %lld rows\n", qUtf8Printable(table), static_cast<long long>(rows));
    return 0;
}
