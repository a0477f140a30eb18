#include "cli/CheckCommand.h"

#include "cli/AppsOutput.h"
#include "cli/CliFeedback.h"
#include "scan/VLMainWindowController.h"

#include <QEventLoop>

#include <unistd.h>

QString CheckCommand::description() const
{
    return Cli::tr("Check the installed applications for updates");
}

QString CheckCommand::help() const
{
    return Cli::tr(
        "Usage: velmora-cli check [--background] [--json]\n"
        "\n"
        "Scans this computer, sends the installed applications to the service in one request, keeps the\n"
        "catalogue's answers in the stored scan, and prints the applications with an update, one line each:\n"
        "display name, installed version and newest version, separated by tabs. With --json, prints them as\n"
        "a JSON array with every field.\n"
        "  --background  check as the periodic background check does: no alerts, and apps the service\n"
        "                knows but that are not installed are not added\n"
        "A failed exchange prints the reason on stderr, exits with 1 and leaves the stored scan as it was\n"
        "before the exchange.\n");
}

int CheckCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    bool background = false;
    for (const QString &argument : arguments) {
        if (argument != QLatin1String("--background")) {
            ctx.err << "error: " << Cli::tr("unexpected argument %1").arg(argument) << "\n\n" << help();
            return ExitUsage;
        }
        background = true;
    }
    CliFeedback feedback(ctx.err);
    VLMainWindowController driver;
    driver.setStartScreenShown(!background);
    if (isatty(STDERR_FILENO)) {
        QObject::connect(&driver, &VLMainWindowController::statusChanged, &driver,
                         [&ctx](const QString &status) { ctx.err << status << Qt::endl; });
    }
    bool matched = false;
    QEventLoop loop;
    QObject::connect(&driver, &VLMainWindowController::checkFinished, &loop, [&](bool ok) {
        matched = ok;
        loop.quit();
    });
    if (background) {
        driver.checkForUpdatesBackGround();
    } else {
        driver.checkForUpdates();
    }
    loop.exec();
    if (!matched) {
        if (!feedback.alerted()) {
            ctx.err << "error: " << Cli::tr("the check with the service failed") << '\n';
        }
        return ExitFailure;
    }
    const AppList outdated = driver.outdatedApps();
    printApps(outdated, ctx, [](const VLApp &app) {
        return QStringList{app.displayName, app.localVersion, app.vlVersion};
    });
    return ExitSuccess;
}
