// velmora: the desktop program. One per user: a second start hands its arguments to the first and exits.

#include "app/DesktopApp.h"
#include "app/ScreenshotRenderer.h"
#include "app/SingleInstance.h"
#include "platform/Log.h"
#include "services/VLGoogleTracking.h"
#include "ui/AppIcon.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTranslator>

#include <memory>

namespace {

// --help and --version only print: they need no display.
bool printsOnly(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--help" || argument == "-h" || argument == "--help-all" || argument == "--version" ||
            argument == "-v") {
            return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    std::unique_ptr<QCoreApplication> app;
    if (printsOnly(argc, argv)) {
        app = std::make_unique<QCoreApplication>(argc, argv);
    } else {
        app = std::make_unique<QApplication>(argc, argv);
    }
    // Qt gives the tray item's title as the application's name: the product's name, as a tray host lists it.
    QApplication::setApplicationName(QStringLiteral("Velmora Desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Velmora Desktop"));
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("velmora"));

    // English is the fallback: its catalogue holds the plural forms the source texts leave open ("update(s)").
    QTranslator translator;
    const QString translations = QStringLiteral(VELMORA_TRANSLATIONS_DIR);
    if (translator.load(QLocale(), QStringLiteral("velmora"), QStringLiteral("_"), translations) ||
        translator.load(QStringLiteral("velmora_en"), translations)) {
        QApplication::installTranslator(&translator);
    }

    QCommandLineParser parser;
    parser.setApplicationDescription(QApplication::translate("main", "Velmora Desktop keeps your apps up to date."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption loginItem(
        QStringLiteral("login-item"),
        QApplication::translate("main", "Started by the login item: never scans at once."));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QApplication::translate("main",
                                "Renders the panel, the window and the preferences as PNG files into DIR, and exits."),
        QStringLiteral("DIR"));
    const QCommandLineOption verbose(QStringLiteral("verbose"),
                                     QApplication::translate("main", "Copies the log to stderr."));
    parser.addOptions({loginItem, screenshot, verbose});
    parser.addPositionalArgument(QStringLiteral("link"),
                                 QApplication::translate("main", "velmora:// install links to open."),
                                 QStringLiteral("[link...]"));
    parser.process(*app);
    installLogRouting(parser.isSet(verbose));
    QApplication::setWindowIcon(AppIcon::programIcon());

    if (parser.isSet(screenshot)) {
        return ScreenshotRenderer::renderAll(parser.value(screenshot)) ? 0 : 1;
    }

    QStringList handed = parser.positionalArguments();
    if (parser.isSet(loginItem)) {
        handed << QStringLiteral("--login-item");
    }
    if (SingleInstance::handOver(handed)) {
        return 0;
    }
    SingleInstance instance;
    if (!instance.listen()) {
        vlLog(QStringLiteral("could not listen for a second start on %1").arg(SingleInstance::serverName()));
    }
    DesktopApp desktop;
    QObject::connect(&instance, &SingleInstance::argumentsReceived, &desktop, &DesktopApp::handleArguments);
    desktop.start(parser.isSet(loginItem));
    for (const QString &link : parser.positionalArguments()) {
        desktop.handleArguments({link});
    }
    const int status = QApplication::exec();
    VLGoogleTracking::waitForPendingHits(2000);
    return status;
}
