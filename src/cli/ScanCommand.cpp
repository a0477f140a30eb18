#include "cli/ScanCommand.h"

#include "cli/AppsOutput.h"
#include "platform/VLNotificationCenter.h"
#include "scan/VLAppScanner.h"

#include <QEventLoop>

QString ScanCommand::description() const
{
    return Cli::tr("Find the applications installed on this computer");
}

QString ScanCommand::help() const
{
    return Cli::tr(
        "Usage: velmora-cli scan [--json]\n"
        "\n"
        "Searches the application, plug-in, widget and screen-saver folders (under the setting volumeRoot and\n"
        "your home folder, then the folders of the setting searchpaths), leaves out what the blacklist\n"
        "names, and prints one line per application, sorted by file name: display name, installed version\n"
        "and path, separated by tabs. With --json, prints a JSON array with one object per application.\n"
        "The stored scan is not changed.\n");
}

int ScanCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    if (!arguments.isEmpty()) {
        ctx.err << "error: " << Cli::tr("unexpected argument %1").arg(arguments.first()) << "\n\n" << help();
        return ExitUsage;
    }
    VLAppScanner scanner;
    AppList apps;
    QEventLoop loop;
    VLNotificationCenter::defaultCenter().subscribe(QLatin1String(kVLAppScannerFinished), &loop,
                                                    [&](const QVariant &object) {
                                                        apps = object.value<AppList>();
                                                        loop.quit();
                                                    });
    scanner.createSearchPredicate();
    loop.exec();

    printApps(apps, ctx, [](const VLApp &app) {
        return QStringList{app.displayName, app.localVersion, app.localPath};
    });
    return ExitSuccess;
}
