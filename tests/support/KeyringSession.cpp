#include "support/KeyringSession.h"

#include <QProcess>

#include <cstdio>

namespace {
constexpr char kMarker[] = "VELMORA_KEYRING_SESSION";

int fail(const char *what)
{
    std::fprintf(stderr, "FAIL: %s\n", what);
    return 1;
}
} // namespace

namespace TestSupport {

int enterKeyringSession(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty(kMarker)) {
        QStringList arguments = {QStringLiteral("--"), QCoreApplication::applicationFilePath()};
        for (int i = 1; i < argc; ++i) {
            arguments.append(QString::fromLocal8Bit(argv[i]));
        }
        qputenv(kMarker, "1");
        QProcess session;
        session.setProcessChannelMode(QProcess::ForwardedChannels);
        session.start(QStringLiteral("dbus-run-session"), arguments);
        if (!session.waitForStarted()) {
            return fail("dbus-run-session (package dbus) is needed for a session bus of the test's own");
        }
        session.waitForFinished(-1);
        return session.exitStatus() == QProcess::NormalExit ? session.exitCode() : 1;
    }
    QProcess keyring;
    keyring.start(QStringLiteral("gnome-keyring-daemon"),
                  {QStringLiteral("--unlock"), QStringLiteral("--components=secrets")});
    if (!keyring.waitForStarted()) {
        return fail("gnome-keyring-daemon (package gnome-keyring) is needed for a Secret Service");
    }
    keyring.write("velmora-test");
    keyring.closeWriteChannel();
    if (!keyring.waitForFinished(30000) || keyring.exitCode() != 0) {
        return fail("gnome-keyring-daemon did not start");
    }
    return -1;
}

} // namespace TestSupport
