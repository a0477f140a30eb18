#include "support/SessionBus.h"

#include <QProcess>

#include <cstdio>

namespace {
constexpr char kMarker[] = "VELMORA_TEST_SESSION_BUS";
} // namespace

namespace TestSupport {

int enterSessionBus(int argc, char **argv)
{
    if (!qEnvironmentVariableIsEmpty(kMarker)) {
        return -1;
    }
    QStringList arguments = {QStringLiteral("--"), QCoreApplication::applicationFilePath()};
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    qputenv(kMarker, "1");
    QProcess session;
    session.setProcessChannelMode(QProcess::ForwardedChannels);
    session.start(QStringLiteral("dbus-run-session"), arguments);
    if (!session.waitForStarted()) {
        std::fprintf(stderr, "FAIL: dbus-run-session (package dbus) is needed for a session bus of the test's own\n");
        return 1;
    }
    session.waitForFinished(-1);
    return session.exitStatus() == QProcess::NormalExit ? session.exitCode() : 1;
}

} // namespace TestSupport
