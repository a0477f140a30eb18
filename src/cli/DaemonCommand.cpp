#include "cli/DaemonCommand.h"

#include "cli/CliFeedback.h"
#include "cli/DesktopFeedback.h"
#include "install/StagingLeftovers.h"
#include "platform/TerminationSignals.h"
#include "scan/NotificationClicks.h"
#include "scan/VLAppDelegate.h"
#include "scan/VLAppScanner.h"
#include "scan/VLMainWindowController.h"
#include "scan/VLScanData.h"
#include "services/VLCrashReporter.h"

#include <QEventLoop>
#include <QFileInfo>

namespace {

// The login item starts the desktop program where it is installed beside us, else this daemon.
QStringList loginItemCommand()
{
    const QString desktop = QCoreApplication::applicationDirPath() + QStringLiteral("/velmora");
    if (QFileInfo(desktop).isExecutable()) {
        return {desktop, QStringLiteral("--login-item")};
    }
    return {QCoreApplication::applicationFilePath(), QStringLiteral("daemon"), QStringLiteral("--login-item")};
}

} // namespace

QString DaemonCommand::description() const
{
    return Cli::tr("Keep checking for updates in the background");
}

QString DaemonCommand::help() const
{
    return Cli::tr("Usage: velmora-cli daemon [--login-item]\n"
                   "\n"
                   "Runs as the desktop program does without its windows: checks at start when the stored scan is\n"
                   "older than four hours, then in the background every 3,400 seconds, keeps the login item in step\n"
                   "with the setting startupItem, and prints notifications on stderr; in a desktop session with a\n"
                   "notification server they are shown there too, and a click on one is acted on. SIGTERM or Ctrl-C\n"
                   "ends it after the running step. --login-item marks a start by the login item, which never forces\n"
                   "a scan.\n");
}

int DaemonCommand::execute(const QStringList &arguments, CommandContext &ctx)
{
    const bool loginItem = arguments == QStringList{QStringLiteral("--login-item")};
    if (!arguments.isEmpty() && !loginItem) {
        ctx.err << "error: " << Cli::tr("unexpected argument %1").arg(arguments.first()) << "\n\n" << help();
        return ExitUsage;
    }
    // In a desktop session notices are also shown on the desktop, where a click acts on them.
    std::unique_ptr<CliFeedback> feedback(DesktopNotifications::serverPresent() ? new DesktopFeedback(ctx.err)
                                                                                : new CliFeedback(ctx.err));
    NotificationClicks clicks;
    // Reports of an earlier crash go out by themselves only when that is the setting; otherwise they wait for
    // "velmora-cli crash-reports".
    VLCrashReporter crashReporter(QStringLiteral("velmora-cli"));
    QObject::connect(&crashReporter, &VLCrashReporter::reportWaiting, &crashReporter, [&feedback] {
        feedback->showSystemNotification(Cli::tr("Crash report waiting"),
                                         Cli::tr("Velmora Desktop crashed earlier; see velmora-cli crash-reports"), {});
    });
    crashReporter.startCrashReporting();
    QEventLoop loop;
    TerminationSignals termination;
    QObject::connect(&termination, &TerminationSignals::received, &loop, &QEventLoop::quit);
    // What a killed update left beside the apps goes before the first check finds it.
    StagingLeftovers::sweep(VLScanData().apps().value_or(AppList()), VLAppScanner::searchScopes());
    VLMainWindowController driver;
    VLAppDelegate delegate(driver, loginItemCommand());
    delegate.applicationDidFinishLaunching(loginItem);
    loop.exec();
    return ExitSuccess; // the driver waits for a running check to finish its save as it goes
}
