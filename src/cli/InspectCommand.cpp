#include "cli/InspectCommand.h"

#include "cli/RecordLines.h"
#include "model/AppJson.h"
#include "model/BundleReader.h"
#include "model/VLApp.h"
#include "model/VLMdItem.h"
#include "platform/FileStatus.h"
#include "platform/FolderReader.h"
#include "platform/NativePath.h"

#include <QDir>
#include <QJsonDocument>

namespace {

// The path an argument names, in NativePath's form. A name that is not UTF-8 reaches the program with U+FFFD in
// place of its stray bytes; each such part of the path is matched with the folder's entries decoded the same way,
// and the one entry that fits gives its own bytes. With none or several, the argument stays as it came.
QString systemPath(const QString &argument)
{
    if (!argument.contains(QChar::ReplacementCharacter)) {
        return argument;
    }
    QByteArray path;
    const QStringList parts = argument.split(QLatin1Char('/'));
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            path += '/';
        }
        if (!parts.at(i).contains(QChar::ReplacementCharacter)) {
            path += QFile::encodeName(parts.at(i));
            continue;
        }
        QByteArrayList fits;
        for (const FolderReader::Entry &entry : FolderReader(path.isEmpty() ? QByteArray(".") : path).entries()) {
            if (QFile::decodeName(entry.name) == parts.at(i)) {
                fits.append(entry.name);
            }
        }
        if (fits.size() != 1) {
            return argument;
        }
        path += fits.first();
    }
    return NativePath::decode(path);
}

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
        const QString named = systemPath(argument);
        // The system's own words: a folder that may not be entered is not a missing file.
        const FileStatus status = FileStatus::of(named, FileStatus::Links::Own);
        if (!status.reached()) {
            ctx.err << "error: " << argument << ": " << status.failure << '\n';
            exitCode = ExitFailure;
            continue;
        }
        // Text operations only: QFileInfo would pass the name through QFile::encodeName.
        const QString path =
            QDir::cleanPath(QDir::isAbsolutePath(named) ? named : QDir::currentPath() + QLatin1Char('/') + named);
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
