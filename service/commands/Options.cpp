#include "commands/Options.h"

#include "storage/Schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <cstdio>

namespace {

const QString serviceFolder = QStringLiteral("/velmora-service");

// What the service ships: under the install prefix (<prefix>/bin/velmora-service and
// <prefix>/share/velmora-service/NAME), else beside the program, as in the build tree.
QString shippedPath(const QString &name)
{
    const QDir programDir(QCoreApplication::applicationDirPath());
    const QString installed = programDir.filePath(QStringLiteral("../share/velmora-service/") + name);
    return QDir::cleanPath(QFileInfo::exists(installed) ? installed : programDir.filePath(name));
}

} // namespace

namespace Options {

void addCommon(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("db"),
                      QStringLiteral("The database: an SQLite file (PATH or sqlite:PATH) or a PostgreSQL server "
                                     "(postgresql://USER@HOST:PORT/NAME)."),
                      QStringLiteral("LOCATION")});
    addDatabaseWait(parser);
    parser.addOption({QStringLiteral("key-file"), QStringLiteral("The key that encrypts member passwords."),
                      QStringLiteral("PATH")});
    parser.addHelpOption();
}

void addDatabaseWait(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("db-wait"),
                      QStringLiteral("Seconds to keep trying a database server that does not answer (default 30)."),
                      QStringLiteral("SECONDS"), QStringLiteral("30")});
}

QString databasePath(const QCommandLineParser &parser)
{
    if (parser.isSet(QStringLiteral("db")))
        return parser.value(QStringLiteral("db"));
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + serviceFolder +
           QStringLiteral("/service.sqlite");
}

QString keyFilePath(const QCommandLineParser &parser)
{
    if (parser.isSet(QStringLiteral("key-file")))
        return parser.value(QStringLiteral("key-file"));
    // Kept in the configuration folder, apart from the database in the data folder.
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + serviceFolder +
           QStringLiteral("/member.key");
}

QString defaultFilesDir()
{
    return shippedPath(QStringLiteral("files"));
}

QString sampleCataloguePath()
{
    return shippedPath(QStringLiteral("sample-catalogue.json"));
}

std::shared_ptr<SqlDatabase> openDatabase(const QCommandLineParser &parser, const QString &location)
{
    QString error;
    const std::chrono::seconds patience(std::max(0, parser.value(QStringLiteral("db-wait")).toInt()));
    auto db = ::openDatabase(location, patience, &error);
    if (!db)
        std::fprintf(stderr, "error: %s\n", qUtf8Printable(error));
    return db;
}

std::unique_ptr<Storage> openStorage(const QCommandLineParser &parser)
{
    const QString location = databasePath(parser);
    auto db = openDatabase(parser, location);
    if (!db)
        return nullptr;
    QString error;
    if (!Schema::ensureCurrent(*db, location, &error)) {
        std::fprintf(stderr, "error: %s\n", qUtf8Printable(error));
        return nullptr;
    }
    return storageOver(db);
}

std::optional<SecretBox> openSecrets(const QCommandLineParser &parser)
{
    QString error;
    auto secrets = SecretBox::open(keyFilePath(parser), &error);
    if (!secrets)
        std::fprintf(stderr, "error: %s\n", qUtf8Printable(error));
    return secrets;
}

int usageError(const QCommandLineParser &parser)
{
    std::fputs(qUtf8Printable(parser.helpText()), stderr);
    return 2;
}

bool parse(QCommandLineParser &parser, const QStringList &args)
{
    if (!parser.parse(args)) {
        std::fprintf(stderr, "error: %s\n", qUtf8Printable(parser.errorText()));
        return false;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        std::exit(0);
    }
    return true;
}

} // namespace Options
