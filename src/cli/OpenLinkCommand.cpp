#include "cli/OpenLinkCommand.h"

#include "cli/RecordLines.h"
#include "cli/UpdateRun.h"
#include "scan/InstallLinks.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"

#include <QEventLoop>

namespace {

QString decisionText(InstallLinks::Decision decision)
{
    switch (decision) {
    case InstallLinks::Decision::Update:
        return Cli::tr("update");
    case InstallLinks::Decision::Install:
        return Cli::tr("install");
    case InstallLinks::Decision::CannotInstall:
        return Cli::tr("cannot be installed from a link");
    case InstallLinks::Decision::UpToDate:
        return Cli::tr("up to date");
    }
    return {};
}

} // namespace

QString OpenLinkCommand::description() const
{
    return Cli::tr("Install what an install link offers");
}

QString OpenLinkCommand::help() const
{
    return Cli::tr(
        "Usage: velmora-cli open-link URL [--yes]\n"
        "\n"
        "Reads an install link (velmora://bundle/ID or velmora://app/ID/NAME/VERSION), looks each linked app\n"
        "up in the stored scan or asks the service about it, and prints one line per app: display name,\n"
        "catalogue id and what the link asks for (update, install, up to date, or cannot be installed from\n"
        "a link), separated by tabs. Then it downloads and installs the apps to update or install, as\n"
        "\"velmora-cli update\" does (see its help for --yes), and prints a line for each one installed.\n");
}

int OpenLinkCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    QStringList words = arguments;
    const bool yes = words.removeAll(QStringLiteral("--yes")) > 0;
    if (words.size() != 1) {
        ctx.err << "error: " << Cli::tr("give one link") << "\n\n" << help();
        return ExitUsage;
    }
    const QString link = words.first();
    if (!link.startsWith(QLatin1String("velmora://"))) {
        ctx.err << "error: " << Cli::tr("%1 is not an install link").arg(link) << '\n';
        return ExitUsage;
    }
    // As the desktop program does: the link waits for the driver's store, read as a launch by the login item reads
    // it (never forcing a scan).
    VLMainWindowController driver;
    QList<InstallLinks::LinkedApp> linked;
    QEventLoop loop;
    QObject::connect(&driver, &VLMainWindowController::linkOpened, &loop,
                     [&](const QList<InstallLinks::LinkedApp> &apps) {
                         linked = apps;
                         loop.quit();
                     });
    driver.loadScanDataOrRunScan(true);
    driver.installFromLink(link);
    loop.exec();
    if (linked.isEmpty()) {
        ctx.err << "error: " << Cli::tr("the link names no app the service knows") << '\n';
        return ExitFailure;
    }
    AppList toInstall;
    for (const InstallLinks::LinkedApp &entry : linked) {
        ctx.out << recordLine({entry.app->displayName, entry.app->vlID, decisionText(entry.decision)}) << '\n';
        if (entry.decision == InstallLinks::Decision::Update || entry.decision == InstallLinks::Decision::Install) {
            toInstall.append(entry.app);
        }
    }
    return toInstall.isEmpty() ? ExitSuccess : UpdateRun(ctx, driver.scanData(), yes).run(toInstall, false);
}
