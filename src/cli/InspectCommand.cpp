#include "cli/InspectCommand.h"

#include "cli/RecordLines.h"
#include "model/AppJson.h"
#include "model/BundleReader.h"
#include "model/VLApp.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace {

// What a reader of the bundle would stumble over: no information dictionary, or files it could not parse.
QStringList bundleWarnings(const QString &path)
{
    BundleReader bundle(path);
    const bool hasInfo = bundle.infoDictionary().has_value();
    bundle.versionPlistDictionary();
    bundle.infoPlistStringsDictionary();
    QStringList warnings = bundle.problems();
    warnings.removeDuplicates();
    if (!hasInfo && warnings.isEmpty()) {
        warnings.append(Cli::tr("%1 is not a bundle: it has no Info.plist").arg(path));
    }
    return warnings;
}

QString summaryLine(const VLApp &app)
{
    return recordLine({app.displayName, app.bundleID, app.localVersion, app.kind,
                       app.isAppStore ? QStringLiteral("App Store") : QStringLiteral("not App Store")});
}

} // namespace

QString InspectCommand::description() const
{
    return Cli::tr("Read installed bundles and print their versions");
}

QString InspectCommand::help() const
{
    return Cli::tr(
        "Usage: velmora-cli inspect [--json] PATH...\n"
        "\n"
        "Reads each bundle (Foo.app, Bar.prefPane, ...) the way a scan does and prints one line per bundle:\n"
        "display name, bundle identifier, installed version, kind, and App Store or not, separated by tabs.\n"
        "With --json, prints a JSON array with one object per bundle, keyed by the record's field names.\n"
        "A path that does not exist is an error; a folder that is not a readable bundle is read anyway\n"
        "(its versions are \"-\") with a warning on stderr.\n");
}

int InspectCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    // Words after "--" are paths even when they start with "-".
    QStringList paths;
    bool optionsEnded = false;
    for (const QString &argument : arguments) {
        if (!optionsEnded && argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (!optionsEnded && argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            ctx.err << "error: " << Cli::tr("unknown option %1").arg(argument) << "\n\n" << help();
            return ExitUsage;
        } else {
            paths.append(argument);
        }
    }
    if (paths.isEmpty()) {
        ctx.err << "error: " << Cli::tr("inspect needs at least one PATH") << "\n\n" << help();
        return ExitUsage;
    }
    int exitCode = ExitSuccess;
    QList<VLApp> apps;
    for (const QString &argument : std::as_const(paths)) {
        const QFileInfo file(argument);
        // The system's own words: a folder that may not be entered is not a missing file.
        struct stat info = {};
        if (lstat(QFile::encodeName(argument).constData(), &info) != 0) {
            ctx.err << "error: " << argument << ": " << QString::fromLocal8Bit(std::strerror(errno)) << '\n';
            exitCode = ExitFailure;
            continue;
        }
        const QString path = QDir::cleanPath(file.absoluteFilePath());
        for (const QString &warning : bundleWarnings(path)) {
            ctx.err << "warning: " << warning << '\n';
        }
        apps.append(VLApp::initWithBundleAt(path));
    }
    if (ctx.json) {
        ctx.out << QJsonDocument(appsToJson(apps)).toJson(QJsonDocument::Indented);
    } else {
        for (const VLApp &app : apps) {
            ctx.out << summaryLine(app) << '\n';
        }
    }
    return exitCode;
}
