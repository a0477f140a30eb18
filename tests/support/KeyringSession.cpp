#include "support/KeyringSession.h"

#include "support/SessionBus.h"

#include <QProcess>

#include <cstdio>

namespace {
int fail(const char *what)
{
    std::fprintf(stderr, "FAIL: %s\n", what);
    return 1;
}
} // namespace

namespace TestSupport {

int enterKeyringSession(int argc, char **argv)
{
    if (const int code = enterSessionBus(argc, argv); code >= 0) {
        return code;
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
