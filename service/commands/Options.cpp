#include "commands/Options.h"

#include <QStandardPaths>

#include <cstdio>

namespace {

const QString serviceFolder = QStringLiteral("/velmora-service");

} // namespace

namespace Options {

void addCommon(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("db"), QStringLiteral("The SQLite database file."), QStringLiteral("PATH")});
    parser.addOption({QStringLiteral("key-file"), QStringLiteral("The key that encrypts member passwords."),
                      QStringLiteral("PATH")});
    parser.addHelpOption();
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
    return QStringLiteral(VELMORA_SERVICE_FILES_DIR);
}

QString sampleCataloguePath()
{
    return QStringLiteral(VELMORA_SERVICE_SAMPLE_CATALOGUE);
}

std::unique_ptr<Storage> openStorage(const QCommandLineParser &parser)
{
    QString error;
    auto storage = openSqliteStorage(databasePath(parser), &error);
    if (!storage)
        std::fprintf(stderr, "error: %s\n", qUtf8Printable(error));
    return storage;
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
