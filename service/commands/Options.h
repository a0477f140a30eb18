#pragma once

// Options every command shares and the places the service keeps its things by default.

#include "members/SecretBox.h"
#include "storage/OpenStorage.h"

#include <QCommandLineParser>

namespace Options {

// --db LOCATION, --db-wait SECONDS and --key-file PATH.
void addCommon(QCommandLineParser &parser);
// --db-wait alone, for commands that name their databases otherwise.
void addDatabaseWait(QCommandLineParser &parser);
QString databasePath(const QCommandLineParser &parser);
QString keyFilePath(const QCommandLineParser &parser);

// The update files built with the service, and the bundled sample catalogue: under the install prefix, else
// beside the program.
QString defaultFilesDir();
QString sampleCataloguePath();

// Open what --db and --key-file name; print the reason and return null when that fails. The storage's tables are
// created in an empty database; one that needs migrating is refused.
std::unique_ptr<Storage> openStorage(const QCommandLineParser &parser);
// The database location names, as it is (no tables are made or checked); null after printing the reason.
std::shared_ptr<SqlDatabase> openDatabase(const QCommandLineParser &parser, const QString &location);
std::optional<SecretBox> openSecrets(const QCommandLineParser &parser);

// Prints the command's help to stderr; returns the exit code for bad usage (2).
int usageError(const QCommandLineParser &parser);

// Parses a command's arguments (args[0] is the command name); prints the reason and returns false on bad usage.
bool parse(QCommandLineParser &parser, const QStringList &args);

} // namespace Options
